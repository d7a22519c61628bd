// closewindow ID: asks the window ID of the display $DISPLAY to close, as a window manager does when the user presses
// the close button. Needed where no window manager runs: the tools that drive a display can only destroy a window,
// which gives its program no chance to end in order.

#include <X11/Xlib.h>
#include <cstdio>
#include <cstdlib>

int main(int argc, char *argv[])
{
    if (argc != 2) {
        std::fputs("usage: closewindow ID\n", stderr);
        return 2;
    }
    Display *display = XOpenDisplay(nullptr);
    if (display == nullptr) {
        std::fputs("closewindow: no display\n", stderr);
        return 1;
    }
    XEvent event = {};
    event.xclient.type = ClientMessage;
    event.xclient.window = std::strtoul(argv[1], nullptr, 0);
    event.xclient.message_type = XInternAtom(display, "WM_PROTOCOLS", False);
    event.xclient.format = 32;
    event.xclient.data.l[0] = static_cast<long>(XInternAtom(display, "WM_DELETE_WINDOW", False));
    event.xclient.data.l[1] = CurrentTime;
    const bool sent = XSendEvent(display, event.xclient.window, False, NoEventMask, &event) != 0;
    XCloseDisplay(display);
    return sent ? 0 : 1;
}
