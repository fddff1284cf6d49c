// Color: an RGBA colour in device RGB with straight (not premultiplied) components.
#pragma once

namespace kit {

/// A colour value. Components are 0 to 1; factories clamp them and map NaN to 0, so a colour
/// always reaches the drawing layer in range.
class Color final {
public:
    Color() = default;

    static Color colorWithCalibratedRedGreenBlueAlpha(float red, float green, float blue, float alpha);
    static Color colorWithDeviceRedGreenBlueAlpha(float red, float green, float blue, float alpha);
    static Color colorWithCalibratedWhiteAlpha(float white, float alpha);
    /// 8-bit components, as image editors write them.
    static Color colorWithRGBA8(int red, int green, int blue, int alpha = 255);

    static Color blackColor() { return { 0, 0, 0, 1 }; }
    static Color whiteColor() { return { 1, 1, 1, 1 }; }
    static Color clearColor() { return { 0, 0, 0, 0 }; }
    static Color grayColor() { return { 0.5f, 0.5f, 0.5f, 1 }; }
    static Color lightGrayColor() { return { 2 / 3.0f, 2 / 3.0f, 2 / 3.0f, 1 }; }
    static Color darkGrayColor() { return { 1 / 3.0f, 1 / 3.0f, 1 / 3.0f, 1 }; }
    static Color redColor() { return { 1, 0, 0, 1 }; }
    static Color greenColor() { return { 0, 1, 0, 1 }; }
    static Color blueColor() { return { 0, 0, 1, 1 }; }

    /// The system colours the controls draw with.
    static Color controlTextColor() { return blackColor(); }
    static Color disabledControlTextColor() { return { 0.55f, 0.55f, 0.55f, 1 }; }
    static Color textBackgroundColor() { return whiteColor(); }
    static Color windowBackgroundColor() { return { 0.925f, 0.925f, 0.925f, 1 }; }
    static Color controlColor() { return { 0.97f, 0.97f, 0.97f, 1 }; }
    static Color controlBorderColor() { return { 0.62f, 0.62f, 0.62f, 1 }; }
    static Color selectedTextBackgroundColor() { return { 0.70f, 0.84f, 1, 1 }; }
    static Color selectedMenuItemColor() { return { 0.20f, 0.45f, 0.90f, 1 }; }
    static Color keyboardFocusIndicatorColor() { return { 0.33f, 0.60f, 0.97f, 1 }; }

    float redComponent() const { return m_red; }
    float greenComponent() const { return m_green; }
    float blueComponent() const { return m_blue; }
    float alphaComponent() const { return m_alpha; }
    Color colorWithAlphaComponent(float alpha) const;

    /// Makes the colour the fill and the stroke colour of the current graphics context.
    void set() const;
    void setFill() const;
    void setStroke() const;

    bool operator==(const Color&) const = default;

private:
    Color(float red, float green, float blue, float alpha) : m_red(red), m_green(green), m_blue(blue), m_alpha(alpha) {}

    float m_red = 0;
    float m_green = 0;
    float m_blue = 0;
    float m_alpha = 1;
};

} // namespace kit
