#pragma once

#include <string>

#include "bench/Desktop.h"
#include "bench/Samples.h"

namespace Vastel_Connect::bench {

inline const std::string kName = "com.vastel.Connect";
/// What a peer that waits on the bus takes.
inline const std::string kPeerName = "com.vastel.Bare";

/// The programs that are compared.
struct Programs {
  std::string connect = BENCH_CONNECT;
  std::string folder = BENCH_PROGRAMS;

  [[nodiscard]] std::string handler() const { return folder + "/bench_handler"; }
};

/// From a link, or the call that opens its page, to the start of the page's handler.
void measureRoad(Samples& samples, Desktop& desktop, const Programs& programs, int rounds);

/// From the start of a program to its name on the bus.
void measureStart(Samples& samples, Desktop& desktop, const Programs& programs, int rounds);

/// Links that open nothing, as many as go through, and what they leave in memory.
void measureLoad(Samples& samples, Desktop& desktop, const Programs& programs, int rounds,
                 int links);

/// The program's own part of a link's way, without a desktop, for small links and large ones.
void measureCore(Samples& samples, int rounds);

}  // namespace Vastel_Connect::bench
