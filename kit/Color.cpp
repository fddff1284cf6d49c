// Color: clamped factories and the hand-over to the current graphics context.
#include "kit/Color.h"

#include "kit/GraphicsContext.h"

namespace kit {

namespace {

float unit(float value)
{
    if (!(value > 0))
        return 0; // NaN too
    return value < 1 ? value : 1;
}

} // namespace

Color Color::colorWithCalibratedRedGreenBlueAlpha(float red, float green, float blue, float alpha)
{
    return { unit(red), unit(green), unit(blue), unit(alpha) };
}

Color Color::colorWithDeviceRedGreenBlueAlpha(float red, float green, float blue, float alpha)
{
    return colorWithCalibratedRedGreenBlueAlpha(red, green, blue, alpha);
}

Color Color::colorWithCalibratedWhiteAlpha(float white, float alpha)
{
    return colorWithCalibratedRedGreenBlueAlpha(white, white, white, alpha);
}

Color Color::colorWithRGBA8(int red, int green, int blue, int alpha)
{
    return colorWithCalibratedRedGreenBlueAlpha(red / 255.0f, green / 255.0f, blue / 255.0f, alpha / 255.0f);
}

Color Color::colorWithAlphaComponent(float alpha) const
{
    Color c = *this;
    c.m_alpha = unit(alpha);
    return c;
}

void Color::set() const
{
    setFill();
    setStroke();
}

void Color::setFill() const
{
    if (GraphicsContext* context = GraphicsContext::currentContext())
        context->setFillColor(*this);
}

void Color::setStroke() const
{
    if (GraphicsContext* context = GraphicsContext::currentContext())
        context->setStrokeColor(*this);
}

} // namespace kit
