// The floor: the least program that owns a name on the bus and answers messages. `bare-bus NAME` takes the
// name and answers every message with an empty reply and, to who sent it, a message of the same shape without
// its longest value.

#include <systemd/sd-bus.h>
#include <systemd/sd-event.h>

#include <cstdlib>

namespace {

int OnMessage(sd_bus_message* message, void*, sd_bus_error*)
{
    const char *port = nullptr, *from = nullptr, *fromPort = nullptr;
    const void* bytes = nullptr;
    size_t size = 0;
    if (sd_bus_message_read(message, "sss", &port, &from, &fromPort) < 0) return 0;
    sd_bus_message_enter_container(message, 'a', "{sv}");
    sd_bus_message_enter_container(message, 'e', "sv");
    sd_bus_message_skip(message, "s");
    sd_bus_message_enter_container(message, 'v', "ay");
    sd_bus_message_read_array(message, 'y', &bytes, &size);

    sd_bus_message* answer = nullptr;
    sd_bus_message_new_method_call(sd_bus_message_get_bus(message), &answer, from,
                                   "/com/corvane/platform/port", "com.corvane.platform.MessagePort1",
                                   "SendTrusted");
    sd_bus_message_append(answer, "sssa{sv}", fromPort, "bare", "", 1, "status", "s", "success");
    sd_bus_message_set_expect_reply(answer, false);
    sd_bus_send(sd_bus_message_get_bus(message), answer, nullptr);
    sd_bus_message_unref(answer);
    return 1;
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 2) return EXIT_FAILURE;
    sd_event* event = nullptr;
    sd_bus* bus = nullptr;
    static const sd_bus_vtable kTable[] = {
        SD_BUS_VTABLE_START(0),
        SD_BUS_METHOD("SendTrusted", "sssa{sv}", "", OnMessage, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_VTABLE_END,
    };
    if (sd_event_default(&event) < 0 || sd_bus_open_user(&bus) < 0) return EXIT_FAILURE;
    sd_bus_attach_event(bus, event, SD_EVENT_PRIORITY_NORMAL);
    sd_bus_add_object_vtable(bus, nullptr, "/com/corvane/platform/port", "com.corvane.platform.MessagePort1",
                             kTable, nullptr);
    if (sd_bus_request_name(bus, argv[1], 0) < 0) return EXIT_FAILURE;
    return sd_event_loop(event);
}
