// StreamBogon.h - marks the constructor that reads a value from an attribute log.
//
// Test: none; one empty type.
#pragma once

namespace Vel {

// Holds nothing: T(NboAttrLog::In*, StreamBogon) cannot be mistaken for another constructor of T.
struct StreamBogon {};

} // namespace Vel
