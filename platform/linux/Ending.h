#pragma once

#include <cstdint>

namespace Vastel_Connect {

/// From now on the signals to end (SIGINT, SIGTERM, SIGHUP) are noted, and the program ends in the
/// normal way. A second one ends it at once; SIGHUP does not count, which comes before or behind
/// another where a terminal goes away. One that was ignored at the start stays ignored.
void catchEndingSignals();

/// Whether a signal to end came, or beginEnding was called. Any thread.
[[nodiscard]] bool isEnding();

/// Begins the end without a signal.
void beginEnding();

/// Waits for a descriptor, `events` as poll has them, or until `microseconds` are over (UINT64_MAX:
/// no limit) or a signal is handled. Returns at once when a signal to end came already, unless
/// `evenAtTheEnd`. False: the time is over.
[[nodiscard]] bool waitForDescriptor(int descriptor, short events, std::uint64_t microseconds,
                                     bool evenAtTheEnd);

/// Lives while the program writes to somebody who may be stuck. Once it is asked to end, all of
/// them together have one second, and each a tenth of a second when that is used up. When it is
/// over, /dev/null takes the place of the descriptor.
class LimitedWait {
 public:
  explicit LimitedWait(int descriptor);
  ~LimitedWait();
  LimitedWait(const LimitedWait&) = delete;
  LimitedWait& operator=(const LimitedWait&) = delete;
};

}  // namespace Vastel_Connect
