#include "bench/Samples.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <random>
#include <thread>

namespace Vastel_Connect::bench {
namespace {

/// What the one before leaves running has ended by then.
constexpr std::chrono::milliseconds kRest{4};

}  // namespace

void Samples::compare(const std::string& topic, const std::string& name, const std::string& unit,
                      int rounds, const std::vector<Contestant>& contestants) {
  std::fprintf(stderr, "bench: %s: %s\n", topic.c_str(), name.c_str());
  boost::json::object values;
  for (const Contestant& each : contestants) {
    (void)each.measure();
    values[each.name] = boost::json::array();
  }
  std::vector<Contestant> order = contestants;
  std::mt19937 random;
  for (int round = 0; round < rounds; ++round) {
    std::shuffle(order.begin(), order.end(), random);
    for (const Contestant& each : order) {
      std::this_thread::sleep_for(kRest);
      values[each.name].as_array().push_back(each.measure());
    }
  }
  rows_.push_back({{"topic", topic}, {"name", name}, {"unit", unit}, {"samples", values}});
}

void Samples::add(const std::string& topic, const std::string& name, const std::string& unit,
                  const std::string& contestant, double value) {
  rows_.push_back({{"topic", topic},
                   {"name", name},
                   {"unit", unit},
                   {"samples", boost::json::object{{contestant, boost::json::array{value}}}}});
}

void Samples::write(const std::string& path) const {
  std::ofstream(path) << boost::json::serialize(rows_) << "\n";
}

}  // namespace Vastel_Connect::bench
