// RectangleSelectionOptions: the option panel of the rectangle and ellipse marquee tools.
#pragma once

#include "Classes/Selection/SelectionPanel.h"
#include "kit/TextField.h"

/// Selection mode, feather radius, marquee type (0 Normal, 1 Fixed Ratio, 2 Fixed Size) and
/// the ratio or fixed size that goes with the type. The marquee tools read these at every
/// mouse action; every setter clamps and then refreshes what the panel shows.
class RectangleSelectionOptions final : public SelectionPanel, public kit::TextFieldDelegate {
    KIT_MAKEABLE
public:
    void initData() override;
    void initView() override;

    float feather() const { return m_fFeather; }
    int SelectionType() const { return m_nSelectionType; }
    void getSelectionRatioHeightRatio(float& width, float& height) const;
    /// The fixed width and height in pixels.
    kit::Size getSelectionFixedSize() const;

    /// Clamped to 0 to 100.
    void setFeather(float feather);
    /// Stored as given; any number but 0 to 2 leaves the width and height fields as they are.
    void setSelectionType(int type);
    /// Each part clamped to 0.001 to 999.999.
    void setSelectionRatioHeightRatio(float width, float height);
    /// Each side clamped to 1 to 3000, then truncated to whole pixels.
    void setSelectionFixedSize(kit::Size size);

    /// Actions of the type pop-up, the slider buttons and the sliders.
    void changeSelectionType(kit::Object* sender);
    void showSilder(kit::Object* sender);
    void hideSlider(kit::Object* sender);
    void changeSilderValue(kit::Object* sender);

    void changeSelectionFeatherUI();
    void changeSelectionSizeUI();

    bool controlTextShouldBeginEditing(kit::Control*, kit::TextView*) override { return true; }
    /// Commits the typed text of the feather, width or height field; always lets editing end.
    bool controlTextShouldEndEditing(kit::Control* control, kit::TextView* fieldEditor) override;
    /// Return commits, Escape abandons the typing.
    bool controlTextViewDoCommandBySelector(
        kit::Control* control, kit::TextView* textView, const std::string& command) override;

    kit::TextField* featherText() const { return m_featherText; }
    kit::TextField* widthText() const { return m_widthText; }
    kit::TextField* heightText() const { return m_heightText; }

    static constexpr int kTypeNormal = 0;
    static constexpr int kTypeFixedRatio = 1;
    static constexpr int kTypeFixedSize = 2;

private:
    explicit RectangleSelectionOptions(const kit::Rect& frame) : SelectionPanel(frame, kModeIntersect) {}

    /// The value that the width (tag 300) or height (tag 400) group shows, as its slider's range and value.
    void showSizeOnSlider(int sliderTag, int pixels, float ratio);
    /// A typed or slid width (`isWidth`) or height, read as pixels or as a ratio part by the type.
    void takeSizeValue(bool isWidth, long long pixels, float ratio);
    void addTypeGroup();

    float m_fFeather = 0;
    int m_nSelectionType = 0;
    float m_fWidthRatio = 1;
    float m_fHeightRatio = 2;
    int m_nFixedWidth = 200;
    int m_nFixedHeight = 200;
    kit::TextField* m_featherText = nullptr;
    kit::TextField* m_widthText = nullptr;
    kit::TextField* m_heightText = nullptr;
};
