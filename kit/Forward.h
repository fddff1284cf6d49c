// Forward declarations of the kit's types.
#pragma once

namespace kit {

class Application;
class AutoreleasePool;
class Bundle;
class Cursor;
class Event;
class TrackingArea;
struct DraggingInfo;
class Image;
class NotificationCenter;
class Object;
class Responder;
class RunLoop;
class StringsTable;
class View;
class Window;
struct Notification;
struct Point;
struct Rect;
struct Size;
template <typename T> class RefPtr;

} // namespace kit
