// Which watch face is shown, and having the service show another.

#pragma once

#include <string>

#include "arguments.h"
#include "connection.h"
#include "faces.h"

namespace Wfctl {

bool IsCurrent(const Current& current, const std::string& face);

// As the application `self`, on a trusted port. False when the service does not do it in time; stops with
// Exit::kError when `self` cannot be had.
bool MakeCurrent(Connection& connection, const PeerAddress& self, const std::string& face, Seconds timeout);

}  // namespace Wfctl
