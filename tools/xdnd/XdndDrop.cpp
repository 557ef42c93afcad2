// vorra-xdnd-drop: drops one file on an X window the way a file manager does, through the
// XDND protocol, so that tests under Xvfb can drive a drop that xdotool cannot.
#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <poll.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace {

constexpr long kVersion = 5;
constexpr int kTimeoutMs = 5000;

enum Exit { kOk = 0, kUsage = 1, kNotAware = 2, kRefused = 3, kTimeout = 4, kXError = 5 };

Display* dpy = nullptr;
bool xError = false;

struct Atoms {
    Atom aware, proxy, enter, position, status, drop, finished, selection, copy, uriList, targets;
};
Atoms atoms;

int OnXError(Display* display, XErrorEvent* error) {
    char text[256];
    XGetErrorText(display, error->error_code, text, sizeof text);
    std::fprintf(stderr, "vorra-xdnd-drop: X error: %s\n", text);
    xError = true;
    return 0;
}

// The protocol version a window announces, or 0 where it is not a drop target.
long AwareVersion(Window window) {
    Atom type = None;
    int format = 0;
    unsigned long count = 0, after = 0;
    unsigned char* data = nullptr;
    long version = 0;
    if (XGetWindowProperty(dpy, window, atoms.aware, 0, 1, False, AnyPropertyType, &type, &format,
                           &count, &after, &data) == Success &&
        data && type == XA_ATOM && format == 32 && count == 1) {
        version = static_cast<long>(*reinterpret_cast<Atom*>(data));
    }
    if (data) {
        XFree(data);
    }
    return version;
}

// The given window, one of its ancestors or else one of its descendants that is a drop
// target: the id a window search gives need not be the one that carries XdndAware.
Window FindAware(Window start) {
    Window root = 0, parent = 0, *children = nullptr;
    unsigned int count = 0;
    for (Window w = start; w;) {
        if (AwareVersion(w) > 0) {
            return w;
        }
        if (!XQueryTree(dpy, w, &root, &parent, &children, &count) || xError) {
            return 0;
        }
        if (children) {
            XFree(children);
        }
        w = parent == root ? 0 : parent;
    }
    std::vector<Window> queue{start};
    for (size_t i = 0; i < queue.size(); ++i) {
        if (i > 0 && AwareVersion(queue[i]) > 0) {
            return queue[i];
        }
        if (XQueryTree(dpy, queue[i], &root, &parent, &children, &count)) {
            queue.insert(queue.end(), children, children + count);
            if (children) {
                XFree(children);
            }
        }
    }
    return 0;
}

// Keeps unreserved bytes and slashes; everything else, blanks above all, as %XX.
std::string FileUri(const std::string& path) {
    static const char hex[] = "0123456789ABCDEF";
    std::string uri = "file://";
    for (unsigned char c : path) {
        if (std::isalnum(c) || c == '/' || c == '-' || c == '.' || c == '_' || c == '~') {
            uri += static_cast<char>(c);
        } else {
            uri += '%';
            uri += hex[c >> 4];
            uri += hex[c & 15];
        }
    }
    return uri + "\r\n";
}

void Send(Window to, Window target, Atom type, long l1, long l2, long l3, long l4, Window source) {
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.display = dpy;
    event.xclient.window = target;
    event.xclient.message_type = type;
    event.xclient.format = 32;
    event.xclient.data.l[0] = static_cast<long>(source);
    event.xclient.data.l[1] = l1;
    event.xclient.data.l[2] = l2;
    event.xclient.data.l[3] = l3;
    event.xclient.data.l[4] = l4;
    XSendEvent(dpy, to, False, NoEventMask, &event);
    XFlush(dpy);
}

// Serves the file's URI to whoever asks for the drag's selection.
void AnswerSelection(const XSelectionRequestEvent& request, const std::string& uri) {
    XEvent reply{};
    reply.xselection.type = SelectionNotify;
    reply.xselection.display = dpy;
    reply.xselection.requestor = request.requestor;
    reply.xselection.selection = request.selection;
    reply.xselection.target = request.target;
    reply.xselection.time = request.time;
    // Clients older than ICCCM 2 name no property.
    Atom property = request.property == None ? request.target : request.property;
    reply.xselection.property = None;
    if (request.target == atoms.uriList) {
        XChangeProperty(dpy, request.requestor, property, atoms.uriList, 8, PropModeReplace,
                        reinterpret_cast<const unsigned char*>(uri.data()),
                        static_cast<int>(uri.size()));
        reply.xselection.property = property;
    } else if (request.target == atoms.targets) {
        Atom offered[] = {atoms.targets, atoms.uriList};
        XChangeProperty(dpy, request.requestor, property, XA_ATOM, 32, PropModeReplace,
                        reinterpret_cast<unsigned char*>(offered), 2);
        reply.xselection.property = property;
    }
    XSendEvent(dpy, request.requestor, False, NoEventMask, &reply);
    XFlush(dpy);
}

// Waits for a client message of the given type, answering selection requests meanwhile.
bool WaitFor(Atom type, XEvent& out, const std::string& uri) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(kTimeoutMs);
    for (;;) {
        while (XPending(dpy)) {
            XNextEvent(dpy, &out);
            if (out.type == SelectionRequest) {
                AnswerSelection(out.xselectionrequest, uri);
            } else if (out.type == ClientMessage && out.xclient.message_type == type) {
                return true;
            }
        }
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            end - std::chrono::steady_clock::now());
        if (left.count() <= 0) {
            return false;
        }
        pollfd fd{ConnectionNumber(dpy), POLLIN, 0};
        poll(&fd, 1, static_cast<int>(left.count()));
    }
}

int Fail(int code, const std::string& message) {
    std::fprintf(stderr, "vorra-xdnd-drop: %s\n", message.c_str());
    return code;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 5) {
        return Fail(kUsage, "usage: vorra-xdnd-drop <window id> <x> <y> <file path>");
    }
    char* end = nullptr;
    const Window given = std::strtoul(argv[1], &end, 0);
    if (*end || !given) {
        return Fail(kUsage, std::string("not a window id: ") + argv[1]);
    }
    const int x = std::atoi(argv[2]), y = std::atoi(argv[3]);
    const std::string path = std::filesystem::absolute(argv[4]).lexically_normal().string();
    const std::string uri = FileUri(path);

    dpy = XOpenDisplay(nullptr);
    if (!dpy) {
        return Fail(kXError, "cannot open the display");
    }
    XSetErrorHandler(OnXError);
    atoms = {XInternAtom(dpy, "XdndAware", False),      XInternAtom(dpy, "XdndProxy", False),
             XInternAtom(dpy, "XdndEnter", False),      XInternAtom(dpy, "XdndPosition", False),
             XInternAtom(dpy, "XdndStatus", False),     XInternAtom(dpy, "XdndDrop", False),
             XInternAtom(dpy, "XdndFinished", False),   XInternAtom(dpy, "XdndSelection", False),
             XInternAtom(dpy, "XdndActionCopy", False), XInternAtom(dpy, "text/uri-list", False),
             XInternAtom(dpy, "TARGETS", False)};

    const Window target = FindAware(given);
    if (xError) {
        return Fail(kXError, "window " + std::string(argv[1]) + " cannot be read");
    }
    if (!target) {
        return Fail(kNotAware, "window " + std::string(argv[1]) +
                                   " and its relatives are not XdndAware: no drop target");
    }
    const long version = std::min(AwareVersion(target), kVersion);
    // A proxy takes the messages, which still name the target.
    Window to = target;
    Atom type = None;
    int format = 0;
    unsigned long count = 0, after = 0;
    unsigned char* data = nullptr;
    if (XGetWindowProperty(dpy, target, atoms.proxy, 0, 1, False, XA_WINDOW, &type, &format, &count,
                           &after, &data) == Success &&
        data && count == 1) {
        to = *reinterpret_cast<Window*>(data);
    }
    if (data) {
        XFree(data);
    }

    const Window root = DefaultRootWindow(dpy);
    int rootX = 0, rootY = 0;
    Window child = 0;
    XTranslateCoordinates(dpy, target, root, x, y, &rootX, &rootY, &child);
    const Window source = XCreateSimpleWindow(dpy, root, -10, -10, 1, 1, 0, 0, 0);
    XSetSelectionOwner(dpy, atoms.selection, source, CurrentTime);
    if (XGetSelectionOwner(dpy, atoms.selection) != source) {
        return Fail(kXError, "cannot own XdndSelection");
    }

    Send(to, target, atoms.enter, version << 24, static_cast<long>(atoms.uriList), 0, 0, source);
    Send(to, target, atoms.position, 0, (rootX << 16) | (rootY & 0xffff), CurrentTime,
         static_cast<long>(atoms.copy), source);
    XEvent event;
    if (!WaitFor(atoms.status, event, uri)) {
        Send(to, target, XInternAtom(dpy, "XdndLeave", False), 0, 0, 0, 0, source);
        return Fail(kTimeout, "no XdndStatus from the target within the timeout");
    }
    if (!(event.xclient.data.l[1] & 1)) {
        Send(to, target, XInternAtom(dpy, "XdndLeave", False), 0, 0, 0, 0, source);
        return Fail(kRefused, "the target refused the drop (XdndStatus without accept)");
    }
    Send(to, target, atoms.drop, 0, CurrentTime, 0, 0, source);
    if (!WaitFor(atoms.finished, event, uri)) {
        return Fail(kTimeout, "no XdndFinished from the target within the timeout");
    }
    if (version >= 5 && !(event.xclient.data.l[1] & 1)) {
        return Fail(kRefused, "the target finished the drop without success");
    }
    XDestroyWindow(dpy, source);
    XCloseDisplay(dpy);
    return kOk;
}
