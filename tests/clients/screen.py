"""The dialogs on a desktop's screen, and its keyboard."""

import select

from Xlib import XK, X, display
from Xlib.ext import xtest

from processes import LIMIT


class Screen:
    def __init__(self, desktop):
        self._display = display.Display(desktop.environment()["DISPLAY"])
        desktop.callback(self._display.close)
        self._root = self._display.screen().root
        self._root.change_attributes(event_mask=X.SubstructureNotifyMask)
        self._display.sync()

    def dialog(self):
        """Gives the keyboard to the next window that appears; its title."""
        while True:
            event = self._next_event()
            if event.type == X.MapNotify and not event.override:
                # No window manager does it here.
                event.window.set_input_focus(X.RevertToParent, X.CurrentTime)
                return event.window.get_full_text_property(self._display.get_atom("_NET_WM_NAME"))

    def press(self, key):
        """Presses the key of this name."""
        code = self._display.keysym_to_keycode(XK.string_to_keysym(key))
        xtest.fake_input(self._display, X.KeyPress, code)
        xtest.fake_input(self._display, X.KeyRelease, code)
        self._display.sync()

    def _next_event(self):
        if not self._display.pending_events():
            assert select.select([self._display], [], [], LIMIT)[0], "no window appears"
        return self._display.next_event()
