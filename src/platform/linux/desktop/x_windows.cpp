#include "platform/linux/desktop/x_windows.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <memory>
#include <optional>

namespace quirepress {

namespace {

struct DisplayRelease {
    void operator()(Display* display) const { XCloseDisplay(display); }
};
struct XRelease {
    void operator()(void* data) const { XFree(data); }
};
template <typename T>
using XData = std::unique_ptr<T, XRelease>;

// Windows may go while they are looked at; that ends no program.
int IgnoreError(Display*, XErrorEvent*) {
    return 0;
}

struct Property {
    XData<unsigned char> data;
    unsigned long count = 0;
    int format = 0;
};

Property ReadProperty(Display* display, Window window, const char* name, long most) {
    Property property;
    Atom type = None;
    unsigned long left = 0;
    unsigned char* data = nullptr;
    const Atom atom = XInternAtom(display, name, True);
    if (atom == None || XGetWindowProperty(display, window, atom, 0, most, False, AnyPropertyType, &type,
                                           &property.format, &property.count, &left, &data) != Success)
        return {};
    property.data.reset(data);
    return property;
}

bool IsOfProcess(Display* display, Window window, std::int64_t processId) {
    const Property id = ReadProperty(display, window, "_NET_WM_PID", 1);
    return id.format == 32 && id.count == 1 && *reinterpret_cast<const long*>(id.data.get()) == processId;
}

std::string TitleOf(Display* display, Window window) {
    constexpr long kMostWords = 1'024;
    const Property title = ReadProperty(display, window, "_NET_WM_NAME", kMostWords);
    if (title.format == 8) return {reinterpret_cast<const char*>(title.data.get()), title.count};
    char* name = nullptr;
    if (XFetchName(display, window, &name) == 0 || name == nullptr) return {};
    const XData<char> owned(name);
    return name;
}

// The window manager puts frames around windows.
std::optional<Window> FindBelow(Display* display, Window parent, std::int64_t processId,
                                const std::string& title, int depth) {
    constexpr int kMostDepth = 3;
    Window root = None;
    Window parentOfIt = None;
    Window* list = nullptr;
    unsigned int count = 0;
    if (XQueryTree(display, parent, &root, &parentOfIt, &list, &count) == 0) return {};
    const XData<Window> children(list);
    for (unsigned int i = 0; i < count; ++i) {
        const Window child = children.get()[i];
        if (IsOfProcess(display, child, processId) && TitleOf(display, child) == title) return child;
        if (depth >= kMostDepth) continue;
        if (const auto found = FindBelow(display, child, processId, title, depth + 1)) return found;
    }
    return {};
}

}  // namespace

bool CloseXWindow(std::int64_t processId, const std::string& title) {
    XSetErrorHandler(IgnoreError);
    const std::unique_ptr<Display, DisplayRelease> display(XOpenDisplay(nullptr));
    if (!display) return false;
    const auto window = FindBelow(display.get(), DefaultRootWindow(display.get()), processId, title, 0);
    if (!window) return false;
    XEvent event = {};
    event.xclient.type = ClientMessage;
    event.xclient.window = *window;
    event.xclient.message_type = XInternAtom(display.get(), "WM_PROTOCOLS", False);
    event.xclient.format = 32;
    event.xclient.data.l[0] = static_cast<long>(XInternAtom(display.get(), "WM_DELETE_WINDOW", False));
    event.xclient.data.l[1] = CurrentTime;
    const bool isSent = XSendEvent(display.get(), *window, False, NoEventMask, &event) != 0;
    XSync(display.get(), False);
    return isSent;
}

}  // namespace quirepress
