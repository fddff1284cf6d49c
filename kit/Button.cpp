// Button: tracking a click and drawing the bezel, the image and the title.
#include "kit/Button.h"

#include "kit/BezierPath.h"
#include "kit/Event.h"
#include "kit/GraphicsContext.h"
#include "kit/ImageView.h"
#include "kit/TextLayout.h"

#include <algorithm>

namespace kit {

namespace {

RefPtr<BezierPath> roundedRect(const Rect& r, float radius)
{
    radius = std::max(0.0f, std::min({ radius, r.width() / 2, r.height() / 2 }));
    const float k = radius * (1 - 0.5522847498f);
    RefPtr<BezierPath> path = BezierPath::bezierPath();
    path->moveToPoint({ r.minX() + radius, r.minY() });
    path->lineToPoint({ r.maxX() - radius, r.minY() });
    path->curveToPointControlPoint1ControlPoint2(
        { r.maxX(), r.minY() + radius }, { r.maxX() - k, r.minY() }, { r.maxX(), r.minY() + k });
    path->lineToPoint({ r.maxX(), r.maxY() - radius });
    path->curveToPointControlPoint1ControlPoint2(
        { r.maxX() - radius, r.maxY() }, { r.maxX(), r.maxY() - k }, { r.maxX() - k, r.maxY() });
    path->lineToPoint({ r.minX() + radius, r.maxY() });
    path->curveToPointControlPoint1ControlPoint2(
        { r.minX(), r.maxY() - radius }, { r.minX() + k, r.maxY() }, { r.minX(), r.maxY() - k });
    path->lineToPoint({ r.minX(), r.minY() + radius });
    path->curveToPointControlPoint1ControlPoint2(
        { r.minX() + radius, r.minY() }, { r.minX(), r.minY() + k }, { r.minX() + k, r.minY() });
    path->closePath();
    return path;
}

bool hasOnOffState(ButtonType type)
{
    switch (type) {
    case PushOnPushOffButton:
    case ToggleButton:
    case SwitchButton:
    case OnOffButton: return true;
    case RadioButton: // a click turns a radio button on, never off
    case MomentaryLightButton:
    case MomentaryChangeButton:
    case MomentaryPushInButton: return false;
    }
    return false;
}

} // namespace

void Button::setImage(RefPtr<Image> image)
{
    m_image = std::move(image);
    setNeedsDisplay();
}

void Button::setAlternateImage(RefPtr<Image> image)
{
    m_alternateImage = std::move(image);
    setNeedsDisplay();
}

void Button::setTitle(std::string title)
{
    m_title = std::move(title);
    setNeedsDisplay();
}

void Button::setAlternateTitle(std::string title)
{
    m_alternateTitle = std::move(title);
    setNeedsDisplay();
}

void Button::setButtonType(ButtonType type)
{
    m_type = type;
    setNeedsDisplay();
}

void Button::setBordered(bool bordered)
{
    m_bordered = bordered;
    setNeedsDisplay();
}

void Button::setState(CellStateValue state)
{
    m_state = state;
    setNeedsDisplay();
}

void Button::highlight(bool on)
{
    if (m_highlighted == on)
        return;
    m_highlighted = on;
    setNeedsDisplay();
}

bool Button::showsAlternate() const
{
    switch (m_type) {
    case MomentaryChangeButton: return m_highlighted;
    case ToggleButton: return m_state == OnState;
    case MomentaryLightButton:
    case PushOnPushOffButton:
    case SwitchButton:
    case RadioButton:
    case OnOffButton:
    case MomentaryPushInButton: return false;
    }
    return false;
}

Image* Button::shownImage() const
{
    return showsAlternate() && m_alternateImage ? m_alternateImage.get() : m_image.get();
}

const std::string& Button::shownTitle() const
{
    return showsAlternate() && !m_alternateTitle.empty() ? m_alternateTitle : m_title;
}

void Button::click()
{
    RefPtr<Button> keep(this);
    if (hasOnOffState(m_type))
        setState(m_state == OnState ? OffState : OnState);
    else if (m_type == RadioButton)
        setState(OnState);
    sendAction();
}

void Button::performClick()
{
    if (!isEnabled())
        return;
    highlight(true);
    highlight(false);
    click();
}

void Button::mouseDown(const Event& event)
{
    if (!isEnabled())
        return;
    m_tracking = true;
    highlight(boundsContain(localPoint(event)));
}

void Button::mouseDragged(const Event& event)
{
    if (m_tracking)
        highlight(boundsContain(localPoint(event)));
}

void Button::mouseUp(const Event& event)
{
    if (!m_tracking)
        return;
    m_tracking = false;
    highlight(false);
    if (isEnabled() && boundsContain(localPoint(event)))
        click();
}

void Button::drawBezel(GraphicsContext& context, const Rect& box) const
{
    const bool pressed = (m_highlighted && m_type != MomentaryChangeButton)
        || (m_state == OnState && (m_type == PushOnPushOffButton || m_type == OnOffButton));
    RefPtr<BezierPath> bezel
        = roundedRect({ box.minX() + 0.5f, box.minY() + 0.5f, box.width() - 1, box.height() - 1 }, 4);
    context.setFillColor(pressed ? Color::colorWithCalibratedWhiteAlpha(0.78f, 1) : Color::controlColor());
    context.fillPath(*bezel);
    context.setStrokeColor(Color::controlBorderColor());
    context.strokePath(*bezel);
}

void Button::drawMark(GraphicsContext& context, const Rect& box) const
{
    // The check box or radio circle at the left, with the title beside it.
    const float side = std::min(14.0f, box.height());
    const Rect mark { box.minX() + 1.5f, box.minY() + (box.height() - side) / 2 + 0.5f, side - 1, side - 1 };
    RefPtr<BezierPath> outline
        = m_type == RadioButton ? BezierPath::bezierPathWithOvalInRect(mark) : roundedRect(mark, 2.5f);
    context.setFillColor(m_highlighted ? Color::colorWithCalibratedWhiteAlpha(0.85f, 1) : Color::whiteColor());
    context.fillPath(*outline);
    context.setStrokeColor(Color::controlBorderColor());
    context.strokePath(*outline);
    if (m_state == OffState)
        return;
    context.setFillColor(Color::selectedMenuItemColor());
    if (m_type == RadioButton) {
        context.fillPath(*BezierPath::bezierPathWithOvalInRect(
            { mark.minX() + side * 0.3f, mark.minY() + side * 0.3f, side * 0.4f - 1, side * 0.4f - 1 }));
        return;
    }
    RefPtr<BezierPath> tick = BezierPath::bezierPath();
    if (m_state == MixedState) {
        tick->moveToPoint({ mark.minX() + 3, mark.minY() + mark.height() / 2 });
        tick->lineToPoint({ mark.maxX() - 3, mark.minY() + mark.height() / 2 });
    } else {
        tick->moveToPoint({ mark.minX() + 3, mark.minY() + mark.height() * 0.5f });
        tick->lineToPoint({ mark.minX() + mark.width() * 0.42f, mark.minY() + 3 });
        tick->lineToPoint({ mark.maxX() - 2.5f, mark.maxY() - 2.5f });
    }
    tick->setLineWidth(2);
    context.setStrokeColor(Color::selectedMenuItemColor());
    context.strokePath(*tick);
}

void Button::drawContent(GraphicsContext& context, const Rect& box) const
{
    const float alpha = isEnabled() ? 1.0f : 0.5f;
    Image* image = shownImage();
    const std::string& title = shownTitle();
    Rect titleBox = box;
    if (image) {
        Rect imageBox = box;
        if (!title.empty()) // image at the left, title beside it
            imageBox.size.width = std::min(box.width(), image->size().width);
        const Rect where = ImageView::drawingRectForImage(image->size(), imageBox, ImageScaleProportionallyDown);
        context.drawImage(*image, where, {}, CompositeSourceOver, alpha);
        if (!title.empty()) {
            titleBox.origin.x = where.maxX() + 4;
            titleBox.size.width = std::max(0.0f, box.maxX() - titleBox.origin.x);
        }
    }
    if (!title.empty()) {
        const bool centred = !image && m_type != SwitchButton && m_type != RadioButton;
        const TextLayout layout(title, font(), titleBox.width(), LineBreakByTruncatingTail, true);
        const Color color = isEnabled() ? Color::controlTextColor() : Color::disabledControlTextColor();
        layout.draw(context, titleBox, centred ? TextAlignmentCenter : TextAlignmentLeft, color, true);
    }
    // A borderless momentary-light button shows its press by darkening.
    if (m_highlighted && !m_bordered && (m_type == MomentaryLightButton || m_type == MomentaryPushInButton)) {
        context.setFillColor(Color::colorWithCalibratedWhiteAlpha(0, 0.25f));
        context.fillRect(box);
    }
}

void Button::drawRect(const Rect&)
{
    GraphicsContext* context = GraphicsContext::currentContext();
    if (!context)
        return;
    Rect box = bounds();
    if (m_type == SwitchButton || m_type == RadioButton) {
        drawMark(*context, box);
        const float markWidth = std::min(14.0f, box.height()) + 4;
        box = { box.minX() + markWidth, box.minY(), std::max(0.0f, box.width() - markWidth), box.height() };
    } else if (m_bordered) {
        drawBezel(*context, box);
        box = { box.minX() + 3, box.minY() + 2, std::max(0.0f, box.width() - 6), std::max(0.0f, box.height() - 4) };
    }
    drawContent(*context, box);
}

} // namespace kit
