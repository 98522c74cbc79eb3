"""Does on a bus what it is told on its input, a line of JSON each, and prints what came of it."""

import json
import os
import sys

from jeepney import DBusAddress, HeaderFields, MessageType, new_error, new_method_call, new_signal
from jeepney.bus_messages import message_bus
from jeepney.io.blocking import open_dbus_connection

KEYS = "com.corvane.platform.Keys1"

connection = open_dbus_connection(os.environ["DBUS_SYSTEM_BUS_ADDRESS"])


def own(name):
    answer = connection.send_and_get_reply(message_bus.RequestName(name, 4))
    if answer.header.message_type == MessageType.error:
        return answer.header.fields[HeaderFields.error_name]
    return answer.body[0] in (1, 4)


def release(name):
    return connection.send_and_get_reply(message_bus.ReleaseName(name)).body[0] == 1


def is_up(name):
    return bool(connection.send_and_get_reply(message_bus.NameHasOwner(name)).body[0])


def call(name, interface, member):
    address = DBusAddress("/", bus_name=name, interface=interface)
    answer = connection.send_and_get_reply(new_method_call(address, member), timeout=20)
    return answer.header.fields.get(HeaderFields.error_name, "")


def watch_announcements():
    rule = "type='signal',interface='%s'" % KEYS
    connection.send_and_get_reply(message_bus.AddMatch(rule))


def announce(key):
    """Returns when the bus has dealt with it."""
    connection.send(new_signal(DBusAddress("/com/corvane/platform/keys", interface=KEYS), "Changed", "s", (key,)))
    connection.send_and_get_reply(message_bus.GetId())


def next_announcement():
    while True:
        message = connection.receive(timeout=20)
        if message.header.fields.get(HeaderFields.interface) == KEYS:
            return message.body[0]


def tell(result):
    print(json.dumps(result), flush=True)


def serve(name):
    """Owns the name and answers every call with an error of its own, for good."""
    tell(own(name))
    while True:
        message = connection.receive()
        if message.header.message_type == MessageType.method_call:
            connection.send(new_error(message, "test.Answered"))


ACTIONS = {action.__name__: action
           for action in (own, release, is_up, call, serve, watch_announcements, announce, next_announcement)}
for line in sys.stdin:
    action, *arguments = json.loads(line)
    tell(ACTIONS[action](*arguments))
