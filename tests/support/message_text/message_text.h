#pragma once

#include <systemd/sd-bus.h>

#include <string>

namespace kaz::test {

// The values of a sealed message as one line of text, read with plain sd-bus calls. The message is rewound
// afterwards. Each D-Bus type has its own form, so that the text shows the types too:
//
//   s "text"   o o"/path"   g g"sig"   b true   y y1   n n-1   q q1   i i-1   u u1   x x-1   t t1   d d0.5
//   v <value>   a [value, value]   a{..} {key: value, key: value}   (..) (value, value)
//
// Quotes, backslashes and bytes outside printable ASCII are escaped. Throws std::system_error when sd-bus
// cannot read.
std::string messageText(sd_bus_message* message);

}  // namespace kaz::test
