// The floor of a start: the least program that owns a name on the bus. `bare-bus NAME`

#include <systemd/sd-bus.h>
#include <systemd/sd-event.h>

#include <cstdlib>

int main(int argc, char** argv)
{
    if (argc != 2) return EXIT_FAILURE;
    sd_event* event = nullptr;
    sd_bus* bus = nullptr;
    if (sd_event_default(&event) < 0 || sd_bus_open_user(&bus) < 0) return EXIT_FAILURE;
    sd_bus_attach_event(bus, event, SD_EVENT_PRIORITY_NORMAL);
    if (sd_bus_request_name(bus, argv[1], 0) < 0) return EXIT_FAILURE;
    return sd_event_loop(event);
}
