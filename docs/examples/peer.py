#!/usr/bin/python3
"""A peer of the watch-face service in plain D-Bus: any library that can own a name will do.

This one uses jeepney (Debian's python3-jeepney). It speaks as an application, listens on one of its ports
and sends bundles to others:

    . DIR/watch.env
    python3 docs/examples/peer.py com.corvane.w-manager-service w-manager-service::localport \\
        com.corvane.watchface-service watchface-service::localport \\
        type=watch-idle-changed pkgid=com.corvane.watchface-mirel-e1
"""

import os
import sys
import time
from collections import namedtuple

from jeepney import DBusAddress, MessageType, HeaderFields, new_error, new_method_call, new_method_return
from jeepney.bus_messages import message_bus
from jeepney.io.blocking import open_dbus_connection

PORT_PATH = "/com/corvane/platform/port"
PORT_INTERFACE = "com.corvane.platform.MessagePort1"

Message = namedtuple("Message", "sender port bundle")


class Refused(Exception):
    """The platform or the bus refused a message; the text is the error's name."""


def encode(label):
    """A port's name as a label of a bus name: letters and digits stand, anything else is _xx."""
    if not label:
        return "_"
    digits = b"0123456789"
    letters = b"abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"
    keeps = lambda at, byte: byte in letters or (at > 0 and byte in digits)
    return "".join(chr(b) if keeps(i, b) else "_%02x" % b for i, b in enumerate(label.encode()))


def port_name(app, port, trusted=True):
    return "%s.%s.%s" % (app, "trusted" if trusted else "open", encode(port))


def to_wire(bundle):
    """A bundle's values: strings, lists of strings, and bytes where a text is not UTF-8."""
    types = {str: "s", bytes: "ay", list: "as"}
    return {key: (types[type(value)], value) for key, value in bundle.items()}


def from_wire(values):
    texts = {"ay": lambda v: v.decode(errors="surrogateescape"),
             "aay": lambda v: [one.decode(errors="surrogateescape") for one in v]}
    return {key: texts.get(kind, lambda v: v)(value) for key, (kind, value) in values.items()}


class Peer:
    """An application on the bus: its names, and what its port receives."""

    def __init__(self, app, port=None, address=None, trusted=True):
        self.app, self.port = app, port
        self.received = []
        self.connection = open_dbus_connection(address or os.environ["DBUS_SESSION_BUS_ADDRESS"])
        if port:
            self.own(port_name(app, port, trusted))
        if app:
            self.own(app)

    def own(self, name):
        do_not_queue, primary_owner = 4, 1
        reply = self.call(message_bus.RequestName(name, do_not_queue))
        if reply != (primary_owner,):
            raise Refused("the name %s is taken" % name)

    def call(self, message, timeout=10):
        """Sends a call and gives the answer's body; what comes for the port meanwhile is kept."""
        serial = next(self.connection.outgoing_serial)
        self.connection.send(message, serial=serial)
        deadline = time.monotonic() + timeout
        while True:
            answer = self.connection.receive(timeout=max(0, deadline - time.monotonic()))
            if answer.header.fields.get(HeaderFields.reply_serial) != serial:
                self._take(answer)
            elif answer.header.message_type == MessageType.error:
                raise Refused(answer.header.fields[HeaderFields.error_name])
            else:
                return answer.body

    def send(self, app, port, bundle, claim=None, trusted=True):
        """Sends a message and waits until the platform has taken it. `claim`: another sender's id."""
        address = DBusAddress(PORT_PATH, bus_name=app, interface=PORT_INTERFACE)
        member = "SendTrusted" if trusted else "Send"
        body = (port, self.app if claim is None else claim, self.port or "", to_wire(bundle))
        self.call(new_method_call(address, member, "sssa{sv}", body))

    def wait(self, count=1, timeout=10):
        """The messages received, once there are `count`, or those that came in time."""
        deadline = time.monotonic() + timeout
        while len(self.received) < count and time.monotonic() < deadline:
            try:
                self._take(self.connection.receive(timeout=max(0, deadline - time.monotonic())))
            except TimeoutError:
                break
        return self.received

    def _take(self, message):
        fields = message.header.fields
        if message.header.message_type != MessageType.method_call:
            return
        member = fields.get(HeaderFields.member)
        wants_reply = not message.header.flags.value & 1
        if fields.get(HeaderFields.interface) != PORT_INTERFACE or member not in ("Send", "SendTrusted"):
            if wants_reply:
                self.connection.send(new_error(message, "org.freedesktop.DBus.Error.UnknownMethod"))
            return
        _port, sender, sender_port, values = message.body
        self.received.append(Message(sender, sender_port, from_wire(values)))
        if wants_reply:
            self.connection.send(new_method_return(message))

    def close(self):
        self.connection.close()


def main():
    if len(sys.argv) < 5:
        sys.exit(__doc__)
    if "DBUS_SESSION_BUS_ADDRESS" not in os.environ:
        sys.exit("peer.py: no watch in the environment; type: . DIR/watch.env")
    app, port, to_app, to_port = sys.argv[1:5]
    peer = Peer(app, port)
    peer.send(to_app, to_port, dict(pair.split("=", 1) for pair in sys.argv[5:]))
    for message in peer.wait(count=1, timeout=2):
        print(message)


if __name__ == "__main__":
    main()
