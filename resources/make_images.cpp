// make_images: draws the plug-in's and the host's images with the kit's drawing layer, so that
// the pictures are made from source at build time rather than kept as opaque binaries.
#include "kit/BezierPath.h"
#include "kit/Color.h"
#include "kit/GraphicsContext.h"
#include "kit/Image.h"

#include <cstdio>
#include <functional>
#include <string>
#include <vector>

namespace {

using kit::BezierPath;
using kit::Color;
using kit::Point;
using kit::Rect;
using kit::RefPtr;

const Color kInk = Color::colorWithRGBA8(58, 58, 58);
const Color kPressedFill = Color::colorWithRGBA8(62, 122, 214);
const Color kPressedEdge = Color::colorWithRGBA8(34, 84, 168);
const Color kWhite = Color::whiteColor();

// One image being drawn: a transparent context made current for the drawing calls.
class Picture {
public:
    Picture(int width, int height) : m_context(kit::GraphicsContext::create(width, height))
    {
        kit::GraphicsContext::saveGraphicsState();
        kit::GraphicsContext::setCurrentContext(m_context.get());
    }
    ~Picture() { kit::GraphicsContext::restoreGraphicsState(); }
    Picture(const Picture&) = delete;
    Picture& operator=(const Picture&) = delete;

    kit::GraphicsContext& context() { return *m_context; }

    bool write(const std::string& path)
    {
        RefPtr<kit::Image> image = m_context->makeImage();
        std::string error;
        if (!image || !image->writePNG(path, &error)) {
            std::fprintf(stderr, "make_images: %s\n", error.c_str());
            return false;
        }
        return true;
    }

private:
    RefPtr<kit::GraphicsContext> m_context;
};

RefPtr<BezierPath> roundedRect(const Rect& r, float radius)
{
    const float k = radius * 0.4477f; // 1 - the quarter-circle control distance
    RefPtr<BezierPath> p = BezierPath::bezierPath();
    p->moveToPoint({ r.minX() + radius, r.minY() });
    p->lineToPoint({ r.maxX() - radius, r.minY() });
    p->curveToPointControlPoint1ControlPoint2(
        { r.maxX(), r.minY() + radius }, { r.maxX() - k, r.minY() }, { r.maxX(), r.minY() + k });
    p->lineToPoint({ r.maxX(), r.maxY() - radius });
    p->curveToPointControlPoint1ControlPoint2(
        { r.maxX() - radius, r.maxY() }, { r.maxX(), r.maxY() - k }, { r.maxX() - k, r.maxY() });
    p->lineToPoint({ r.minX() + radius, r.maxY() });
    p->curveToPointControlPoint1ControlPoint2(
        { r.minX(), r.maxY() - radius }, { r.minX() + k, r.maxY() }, { r.minX(), r.maxY() - k });
    p->lineToPoint({ r.minX(), r.minY() + radius });
    p->curveToPointControlPoint1ControlPoint2(
        { r.minX() + radius, r.minY() }, { r.minX(), r.minY() + k }, { r.minX() + k, r.minY() });
    p->closePath();
    return p;
}

RefPtr<BezierPath> polygon(const std::vector<Point>& points)
{
    RefPtr<BezierPath> p = BezierPath::bezierPath();
    for (const Point& point : points)
        p->lineToPoint(point);
    p->closePath();
    return p;
}

void dashed(BezierPath& path, const Color& color, float width = 1.5f)
{
    const float lengths[] = { 3, 2 };
    path.setLineDashCountPhase(lengths, 2, 0);
    path.setLineWidth(width);
    color.setStroke();
    path.stroke();
}

void strokeWith(BezierPath& path, const Color& color, float width)
{
    path.setLineWidth(width);
    color.setStroke();
    path.stroke();
}

void fillWith(BezierPath& path, const Color& color)
{
    color.setFill();
    path.fill();
}

// The pressed look shared by the tool and mode buttons: a blue rounded square behind a white
// glyph; the plain look is the dark glyph alone.
using Glyph = std::function<void(const Color& ink, const Color& paper)>;

bool buttonImage(const std::string& path, bool pressed, int size, const Glyph& glyph)
{
    Picture picture(size, size);
    const float s = float(size);
    if (pressed) {
        RefPtr<BezierPath> back = roundedRect({ 1.5f, 1.5f, s - 3, s - 3 }, 5);
        fillWith(*back, kPressedFill);
        strokeWith(*back, kPressedEdge, 1);
    }
    glyph(pressed ? kWhite : kInk, pressed ? kPressedFill : Color::clearColor());
    return picture.write(path);
}

void rectangleGlyph(const Color& ink, const Color&)
{
    RefPtr<BezierPath> box = BezierPath::bezierPathWithRect({ 7.75f, 9.75f, 14.5f, 10.5f });
    dashed(*box, ink);
}

void ellipseGlyph(const Color& ink, const Color&)
{
    RefPtr<BezierPath> oval = BezierPath::bezierPathWithOvalInRect({ 6.75f, 8.75f, 16.5f, 12.5f });
    dashed(*oval, ink);
}

void polygonGlyph(const Color& ink, const Color&)
{
    RefPtr<BezierPath> lasso = polygon({ { 7, 12 }, { 12, 23 }, { 17, 17 }, { 24, 21 }, { 22, 8 }, { 13, 10 } });
    dashed(*lasso, ink);
    for (const Point& corner : { Point { 7, 12 }, Point { 12, 23 }, Point { 24, 21 }, Point { 22, 8 } }) {
        RefPtr<BezierPath> dot = BezierPath::bezierPathWithRect({ corner.x - 1.5f, corner.y - 1.5f, 3, 3 });
        fillWith(*dot, ink);
    }
}

void brushGlyph(const Color& ink, const Color&)
{
    // A round brush leaning to the left, its tip touching a dashed stroke.
    RefPtr<BezierPath> handle = BezierPath::bezierPath();
    handle->moveToPoint({ 24, 25 });
    handle->lineToPoint({ 16.5f, 16 });
    handle->setLineCapStyle(kit::RoundLineCapStyle);
    strokeWith(*handle, ink, 3);
    RefPtr<BezierPath> ferrule = polygon({ { 17.5f, 18.5f }, { 13, 14.5f }, { 15, 12.5f }, { 19.5f, 16.5f } });
    fillWith(*ferrule, ink);
    RefPtr<BezierPath> tip = BezierPath::bezierPath();
    tip->moveToPoint({ 13.5f, 14 });
    tip->curveToPointControlPoint1ControlPoint2({ 6, 7 }, { 10, 12.5f }, { 8, 11 });
    tip->curveToPointControlPoint1ControlPoint2({ 14.5f, 13 }, { 10, 6 }, { 14, 8.5f });
    tip->closePath();
    fillWith(*tip, ink);
    RefPtr<BezierPath> trail = BezierPath::bezierPath();
    trail->moveToPoint({ 6, 5.5f });
    trail->curveToPointControlPoint1ControlPoint2({ 25, 6 }, { 12, 3 }, { 19, 9 });
    dashed(*trail, ink, 1.25f);
}

void eraserGlyph(const Color& ink, const Color& paper)
{
    // A block eraser tilted to the right: dark sleeve, light rubber end, over a base line.
    RefPtr<BezierPath> whole = polygon({ { 6, 13 }, { 15, 22 }, { 25, 12 }, { 16, 3 } });
    RefPtr<BezierPath> sleeve = polygon({ { 11.5f, 18.5f }, { 15, 22 }, { 25, 12 }, { 21.5f, 8.5f } });
    fillWith(*whole, paper.alphaComponent() > 0 ? paper : kWhite);
    fillWith(*sleeve, ink);
    whole->setLineJoinStyle(kit::RoundLineJoinStyle);
    strokeWith(*whole, ink, 1.5f);
    RefPtr<BezierPath> base = BezierPath::bezierPath();
    base->moveToPoint({ 12, 3.25f });
    base->lineToPoint({ 26, 3.25f });
    strokeWith(*base, ink, 1.5f);
}

// Two overlapping squares of the mode glyphs: the one behind and the one in front.
const Rect kBack { 5.75f, 10.75f, 12.5f, 12.5f };
const Rect kFront { 11.75f, 6.75f, 12.5f, 12.5f };

void plusMinus(const Color& ink, bool plus)
{
    RefPtr<BezierPath> bar = BezierPath::bezierPathWithRect({ 21, 23.5f, 7, 2 });
    fillWith(*bar, ink);
    if (plus) {
        RefPtr<BezierPath> post = BezierPath::bezierPathWithRect({ 23.5f, 21, 2, 7 });
        fillWith(*post, ink);
    }
}

void defaultGlyph(const Color& ink, const Color&)
{
    RefPtr<BezierPath> square = BezierPath::bezierPathWithRect({ 8.75f, 8.75f, 12.5f, 12.5f });
    fillWith(*square, ink.colorWithAlphaComponent(0.35f));
    strokeWith(*square, ink, 1.5f);
}

void addGlyph(const Color& ink, const Color&)
{
    RefPtr<BezierPath> both = BezierPath::bezierPathWithRect(kBack);
    both->appendBezierPathWithRect(kFront);
    fillWith(*both, ink.colorWithAlphaComponent(0.35f));
    // The outline of the union: each square's edges outside the other.
    RefPtr<BezierPath> outline = polygon({ { kBack.minX(), kBack.minY() }, { kFront.minX(), kBack.minY() },
        { kFront.minX(), kFront.minY() }, { kFront.maxX(), kFront.minY() }, { kFront.maxX(), kFront.maxY() },
        { kBack.maxX(), kFront.maxY() }, { kBack.maxX(), kBack.maxY() }, { kBack.minX(), kBack.maxY() } });
    strokeWith(*outline, ink, 1.5f);
    plusMinus(ink, true);
}

void subtractGlyph(const Color& ink, const Color&)
{
    RefPtr<BezierPath> rest = BezierPath::bezierPathWithRect(kBack);
    rest->appendBezierPathWithRect(intersection(kBack, kFront));
    rest->setWindingRule(kit::EvenOddWindingRule);
    fillWith(*rest, ink.colorWithAlphaComponent(0.35f));
    RefPtr<BezierPath> back = BezierPath::bezierPathWithRect(kBack);
    strokeWith(*back, ink, 1.5f);
    RefPtr<BezierPath> front = BezierPath::bezierPathWithRect(kFront);
    dashed(*front, ink, 1.25f);
    plusMinus(ink, false);
}

void intersectGlyph(const Color& ink, const Color&)
{
    RefPtr<BezierPath> common = BezierPath::bezierPathWithRect(intersection(kBack, kFront));
    fillWith(*common, ink);
    RefPtr<BezierPath> back = BezierPath::bezierPathWithRect(kBack);
    dashed(*back, ink, 1.25f);
    RefPtr<BezierPath> front = BezierPath::bezierPathWithRect(kFront);
    dashed(*front, ink, 1.25f);
}

// The background strip of the tool bar, stretched across the bar's width.
bool barBackground(const std::string& path)
{
    Picture picture(8, 53);
    for (int row = 0; row < 53; ++row) {
        const float t = float(row) / 52; // 0 at the bottom
        kit::Color::colorWithCalibratedWhiteAlpha(0.84f + 0.11f * t, 1).setFill();
        BezierPath::fillRect({ 0, float(row), 8, 1 });
    }
    Color::colorWithCalibratedWhiteAlpha(0.60f, 1).setFill();
    BezierPath::fillRect({ 0, 0, 8, 1 });
    Color::colorWithCalibratedWhiteAlpha(1, 1).setFill();
    BezierPath::fillRect({ 0, 52, 8, 1 });
    return picture.write(path);
}

// An engraved vertical line: dark on the left, light on the right.
bool separator(const std::string& path)
{
    Picture picture(2, 38);
    Color::colorWithCalibratedWhiteAlpha(0.58f, 1).setFill();
    BezierPath::fillRect({ 0, 0, 1, 38 });
    Color::whiteColor().setFill();
    BezierPath::fillRect({ 1, 0, 1, 38 });
    return picture.write(path);
}

// The icon of the tool family at the bar's left: a marquee with a pointer.
bool familyIcon(const std::string& path)
{
    Picture picture(32, 32);
    RefPtr<BezierPath> box = BezierPath::bezierPathWithRect({ 4.75f, 10.75f, 18.5f, 16.5f });
    dashed(*box, kInk, 1.75f);
    RefPtr<BezierPath> arrow
        = polygon({ { 16, 19 }, { 16, 3 }, { 19.5f, 7 }, { 22, 1.5f }, { 24.5f, 2.5f }, { 22, 8 }, { 27, 8 } });
    fillWith(*arrow, kWhite);
    arrow->setLineJoinStyle(kit::RoundLineJoinStyle);
    strokeWith(*arrow, kInk, 1.25f);
    return picture.write(path);
}

// The slider button at the right end of a value box: a down arrow to open the slider, an
// up arrow on a pressed face to close it.
bool comboButton(const std::string& path, bool open)
{
    // The button's frame overlaps the end of its value field by seven points: the face keeps to
    // the frame's right so that the field's text runs up to the field's own edge.
    Picture picture(25, 24);
    RefPtr<BezierPath> face = roundedRect({ 7.5f, 2.5f, 16, 19 }, 4);
    fillWith(
        *face, open ? Color::colorWithCalibratedWhiteAlpha(0.70f, 1) : Color::colorWithCalibratedWhiteAlpha(0.93f, 1));
    strokeWith(*face, Color::colorWithCalibratedWhiteAlpha(0.55f, 1), 1);
    RefPtr<BezierPath> arrow = open ? polygon({ { 11.5f, 9.5f }, { 19.5f, 9.5f }, { 15.5f, 15 } })
                                    : polygon({ { 11.5f, 14.5f }, { 19.5f, 14.5f }, { 15.5f, 9 } });
    fillWith(*arrow, kInk);
    return picture.write(path);
}

// The dark panel behind the size read-out's white text.
bool sizeBackground(const std::string& path)
{
    Picture picture(130, 45);
    RefPtr<BezierPath> panel = roundedRect({ 0.5f, 0.5f, 129, 44 }, 6);
    fillWith(*panel, Color::colorWithCalibratedWhiteAlpha(0.08f, 0.78f));
    strokeWith(*panel, Color::colorWithCalibratedWhiteAlpha(1, 0.35f), 1);
    return picture.write(path);
}

// The white box behind a value field, with a sunken edge.
bool editBox(const std::string& path)
{
    Picture picture(100, 24);
    RefPtr<BezierPath> box = roundedRect({ 0.5f, 0.5f, 99, 23 }, 3);
    fillWith(*box, kWhite);
    strokeWith(*box, Color::colorWithCalibratedWhiteAlpha(0.60f, 1), 1);
    Color::colorWithCalibratedWhiteAlpha(0, 0.10f).setFill();
    BezierPath::fillRect({ 3, 22, 94, 1 });
    return picture.write(path);
}

// The icon the host shows for the plug-in, plain and chosen.
bool pluginIcon(const std::string& path, bool selected)
{
    return buttonImage(path, selected, 32, [](const Color& ink, const Color&) {
        RefPtr<BezierPath> box = BezierPath::bezierPathWithRect({ 6.75f, 6.75f, 18.5f, 18.5f });
        dashed(*box, ink, 2);
    });
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2 && argc != 3) {
        std::fprintf(stderr, "usage: make_images BUNDLE_RESOURCE_FOLDER [HOST_RESOURCE_FOLDER]\n");
        return 2;
    }
    const std::string bundle = std::string(argv[1]) + "/";
    const struct {
        const char* name;
        Glyph glyph;
    } buttons[] = {
        { "rectangle", rectangleGlyph },
        { "ellipse", ellipseGlyph },
        { "polygon", polygonGlyph },
        { "brush", brushGlyph },
        { "eraser", eraserGlyph },
        { "selection_default", defaultGlyph },
        { "selection_add", addGlyph },
        { "selection_subtract", subtractGlyph },
        { "selection_intersect", intersectGlyph },
    };
    bool ok = true;
    for (const auto& button : buttons) {
        ok = buttonImage(bundle + button.name + ".png", false, 30, button.glyph) && ok;
        ok = buttonImage(bundle + button.name + "2.png", true, 30, button.glyph) && ok;
    }
    ok = barBackground(bundle + "property_bg.png") && ok;
    ok = separator(bundle + "property_separator.png") && ok;
    ok = familyIcon(bundle + "tool_rectangle.png") && ok;
    ok = comboButton(bundle + "image_combox_btn.png", false) && ok;
    ok = comboButton(bundle + "image_combox_btn2.png", true) && ok;
    ok = sizeBackground(bundle + "showSizeBg.png") && ok;
    ok = pluginIcon(bundle + "normalIcon.png", false) && ok;
    ok = pluginIcon(bundle + "selectedIcon.png", true) && ok;
    if (argc == 3)
        ok = editBox(std::string(argv[2]) + "/text_editbox.png") && ok;
    return ok ? 0 : 1;
}
