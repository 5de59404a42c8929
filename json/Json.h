#pragma once

#include <boost/json.hpp>

namespace Vastel_Connect {

/// A value of any JSON kind. Its `if_string()`, `if_object()` and so on answer null for another
/// kind.
using JsonValue = boost::json::value;

/// A dictionary from string keys to values of any JSON kind; the parsed form of a request. A key
/// whose value is null is present.
using JSON = boost::json::object;

/// An array of values of any JSON kind.
using JsonArray = boost::json::array;

}  // namespace Vastel_Connect
