"""A pointer and a keyboard of our own in a Wayland session whose compositor takes virtual ones (sway and its kin).

Speaks the few requests that it needs of the protocols wayland, wlr-virtual-pointer-unstable-v1 and
virtual-keyboard-unstable-v1 itself. Keep one object for as long as windows are to have the keyboard: sway takes a seat's
keyboard away with the last device.
"""

import array
import os
import socket
import struct
import tempfile
import time

# Button and key codes of the kernel (linux/input-event-codes.h).
LEFT, RIGHT, MIDDLE = 0x110, 0x111, 0x112
_ROWS = {1: "\x1b1234567890-=", 15: "\tqwertyuiop[]\n", 30: "asdfghjkl;'", 44: "zxcvbnm,./", 57: " "}
_CODES = {character: first + place for first, row in _ROWS.items() for place, character in enumerate(row)}
_NAMES = {"esc": 1, "enter": 28, "ctrl": 29, "shift": 42, "alt": 56, "super": 125}
# Bits of the modifiers in the standard keymap.
_MODIFIERS = {"shift": 1, "ctrl": 4, "alt": 8, "super": 64}
_KEYMAP = (b'xkb_keymap { xkb_keycodes { include "evdev+aliases(qwerty)" }; xkb_types { include "complete" }; '
           b'xkb_compat { include "complete" }; xkb_symbols { include "pc+us+inet(evdev)" }; };\0')
_DISPLAY = 1


def _words(*numbers):
    return struct.pack(f"<{len(numbers)}I", *numbers)


def _string(text):
    data = text.encode() + b"\0"
    return _words(len(data)) + data + b"\0" * (-len(data) % 4)


class VirtualInput:
    def __init__(self, width, height):
        """The size of the whole output in points, which moves are relative to."""
        self._size = (width, height)
        self._socket = socket.socket(socket.AF_UNIX)
        self._socket.settimeout(10)
        self._socket.connect(os.path.join(os.environ["XDG_RUNTIME_DIR"], os.environ["WAYLAND_DISPLAY"]))
        self._last, self._unread, self._globals = 1, b"", {}
        self._registry = self._new()
        self._send(_DISPLAY, 1, _words(self._registry))
        self.sync()
        seat = self._bind("wl_seat")
        pointers = self._bind("zwlr_virtual_pointer_manager_v1")
        keyboards = self._bind("zwp_virtual_keyboard_manager_v1")
        self._pointer, self._keyboard = self._new(), self._new()
        self._send(pointers, 0, _words(seat, self._pointer))
        self._send(keyboards, 0, _words(seat, self._keyboard))
        with tempfile.TemporaryFile() as keymap:
            keymap.write(_KEYMAP)
            keymap.flush()
            self._send(self._keyboard, 0, _words(1, len(_KEYMAP)), keymap.fileno())
        self.sync()

    def close(self):
        self._socket.close()

    def move(self, x, y):
        self._send(self._pointer, 1, _words(self._now(), int(x), int(y), *self._size))
        self._frame()

    def click(self, x, y, button=LEFT):
        self.move(x, y)
        for state in (1, 0):
            self._send(self._pointer, 2, _words(self._now(), button, state))
            self._frame()

    def type(self, text):
        for character in text:
            names = ["shift"] if character.isupper() else []
            self._strike(names, _CODES[character.lower()])

    def combo(self, combination):
        """Such as "super+shift+j"."""
        *names, key = combination.split("+")
        self._strike(names, _NAMES.get(key) or _CODES[key])

    def sync(self):
        """Returns when the compositor has done what came before."""
        callback = self._new()
        self._send(_DISPLAY, 0, _words(callback))
        while not self._read_until(callback):
            received = self._socket.recv(65536)
            if not received:
                raise AssertionError("the compositor is gone")
            self._unread += received

    def _strike(self, names, code):
        modifiers = 0
        for name in names:
            modifiers |= _MODIFIERS[name]
            self._key(_NAMES[name], 1, modifiers)
        self._key(code, 1, modifiers)
        self._key(code, 0, modifiers)
        for name in reversed(names):
            modifiers &= ~_MODIFIERS[name]
            self._key(_NAMES[name], 0, modifiers)

    def _key(self, code, state, modifiers):
        self._send(self._keyboard, 1, _words(self._now(), code, state))
        self._send(self._keyboard, 2, _words(modifiers, 0, 0, 0))
        self.sync()

    def _frame(self):
        self._send(self._pointer, 4)
        self.sync()

    @staticmethod
    def _now():
        return int(time.monotonic() * 1000) & 0xffffffff

    def _new(self):
        self._last += 1
        return self._last

    def _bind(self, interface):
        if interface not in self._globals:
            raise AssertionError(f"the compositor has no {interface}")
        identifier = self._new()
        self._send(self._registry, 0, _words(self._globals[interface]) + _string(interface) + _words(1, identifier))
        return identifier

    def _send(self, target, request, body=b"", descriptor=None):
        message = _words(target, (8 + len(body)) << 16 | request) + body
        attached = [] if descriptor is None else [(socket.SOL_SOCKET, socket.SCM_RIGHTS, array.array("i", [descriptor]))]
        self._socket.sendmsg([message], attached)

    def _read_until(self, callback):
        """Takes what has been received, and tells whether the callback's answer was among it."""
        done = False
        while len(self._unread) >= 8:
            sender, head = struct.unpack("<II", self._unread[:8])
            size, event = head >> 16, head & 0xffff
            if len(self._unread) < size:
                break
            body, self._unread = self._unread[8:size], self._unread[size:]
            if sender == _DISPLAY and event == 0:
                raise AssertionError(f"the compositor refused a request: {body!r}")
            if sender == self._registry and event == 0:
                name, length = struct.unpack("<II", body[:8])
                self._globals[body[8:8 + length - 1].decode()] = name
            done = done or sender == callback
        return done
