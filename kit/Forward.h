// Forward declarations of the kit's types.
#pragma once

namespace kit {

class Application;
class AutoreleasePool;
class BezierPath;
class Bundle;
class Button;
class Color;
class Control;
class Cursor;
class Event;
class Font;
class GraphicsContext;
class TrackingArea;
struct DraggingInfo;
class Image;
class ImageView;
class NotificationCenter;
class Object;
class PopUpButton;
class PopUpMenuView;
class Responder;
class RunLoop;
class Slider;
class StringsTable;
class TextField;
class TextFieldDelegate;
class TextLayout;
class TextView;
class View;
class Window;
struct Notification;
struct Point;
struct Rect;
struct Size;
template <typename T> class RefPtr;

} // namespace kit
