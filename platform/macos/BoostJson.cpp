// Boost.JSON, compiled as a part of the program.
#include <boost/json/src.hpp>
