#pragma once

#include <boost/json.hpp>
#include <functional>
#include <string>
#include <vector>

namespace Vastel_Connect::bench {

/// Somebody who does the same as the others. `measure` does it once.
struct Contestant {
  std::string name;
  std::function<double()> measure;
};

/// All that was measured, unsorted; bench/report.py makes the figures of it.
class Samples {
 public:
  /// Measures all in each round, so that whatever else the machine does falls on all, in an order
  /// that changes, so that none always comes after the same one. One round before the first does
  /// not count.
  void compare(const std::string& topic, const std::string& name, const std::string& unit,
               int rounds, const std::vector<Contestant>& contestants);

  /// Adds what was measured elsewhere, by one contestant.
  void add(const std::string& topic, const std::string& name, const std::string& unit,
           const std::string& contestant, double value);

  void write(const std::string& path) const;

 private:
  boost::json::array rows_;
};

}  // namespace Vastel_Connect::bench
