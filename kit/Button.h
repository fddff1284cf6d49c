// Button: a push button, image button, toggle, check box or radio button.
#pragma once

#include "kit/Control.h"
#include "kit/Image.h"

#include <string>

namespace kit {

/// Button types, with the original platform's values.
enum ButtonType : int {
    MomentaryLightButton = 0,
    PushOnPushOffButton = 1,
    ToggleButton = 2,
    SwitchButton = 3,
    RadioButton = 4,
    MomentaryChangeButton = 5,
    OnOffButton = 6,
    MomentaryPushInButton = 7,
};

/// Button states, with the original platform's values.
enum CellStateValue : int {
    MixedState = -1,
    OffState = 0,
    OnState = 1,
};

/// A button. A press highlights it while the pointer stays over it; a release over it
/// changes the state of the on-off types and then sends the action; a release elsewhere does
/// nothing. A momentary-change button shows its alternate image (and title) while
/// highlighted, a toggle button while on. A new button is a bordered momentary push-in
/// button with no title or image.
class Button : public Control {
    KIT_MAKEABLE
public:
    static RefPtr<Button> create(const Rect& frame) { return make<Button>(frame); }

    Image* image() const { return m_image.get(); }
    void setImage(RefPtr<Image> image);
    Image* alternateImage() const { return m_alternateImage.get(); }
    void setAlternateImage(RefPtr<Image> image);
    const std::string& title() const { return m_title; }
    void setTitle(std::string title);
    const std::string& alternateTitle() const { return m_alternateTitle; }
    void setAlternateTitle(std::string title);

    ButtonType buttonType() const { return m_type; }
    void setButtonType(ButtonType type);
    bool isBordered() const { return m_bordered; }
    void setBordered(bool bordered);
    CellStateValue state() const { return m_state; }
    void setState(CellStateValue state);
    bool isHighlighted() const { return m_highlighted; }
    void highlight(bool on);

    /// A press and release over the button, as if a person made them (nothing when disabled).
    void performClick();

    /// The image and title the button shows in its current state.
    Image* shownImage() const;
    const std::string& shownTitle() const;

    void mouseDown(const Event& event) override;
    void mouseDragged(const Event& event) override;
    void mouseUp(const Event& event) override;
    void drawRect(const Rect& dirty) override;

protected:
    explicit Button(const Rect& frame) : Control(frame) {}

private:
    /// The state change and the action of a completed click.
    void click();
    bool showsAlternate() const;
    void drawBezel(GraphicsContext& context, const Rect& box) const;
    void drawMark(GraphicsContext& context, const Rect& box) const;
    void drawContent(GraphicsContext& context, const Rect& box) const;

    RefPtr<Image> m_image;
    RefPtr<Image> m_alternateImage;
    std::string m_title;
    std::string m_alternateTitle;
    ButtonType m_type = MomentaryPushInButton;
    bool m_bordered = true;
    CellStateValue m_state = OffState;
    bool m_highlighted = false;
    bool m_tracking = false;
};

} // namespace kit
