// The arrows of the trace: a message on the bus is known on both sides by its sender and its serial.

#pragma once

#include "systemd-handles.h"
#include "trace-event-json.h"

namespace Platform {

// In that span the message was sent on this connection, or has arrived.
void TraceSent(const TraceSpan& span, sd_bus* bus, sd_bus_message* message);
void TraceArrived(const TraceSpan& span, sd_bus_message* message);

}  // namespace Platform
