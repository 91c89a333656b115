#pragma once

// The tracks of a trace that are not the records' own: the sensor samples
// shown as counters, and the press's threads, packed so that every slice
// on a thread nests.

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "inspect/capture/capture_facts.h"

namespace inspect {

// Sensor samples worth a counter: which payload words are axes.
struct sample_axes {
  std::uint32_t category;
  std::uint32_t component;
  std::uint32_t event;  // the record's event id
  double scale;         // 0: the word as a signed integer
  std::string_view axes[3];
};

// The sample axes of a record, or null when it is no sample.
const sample_axes* samples_of(const record_row& row);

// Press slices go on named threads; one that would overlap without nesting
// goes on a further thread of the same name, so every thread nests.
class thread_packer {
 public:
  struct slot {
    std::string kind;  // the name asked for: "finger", "haptics"...
    int copy;          // of that kind, from 1
    std::string name;  // shown: the kind, then "(2)", "(3)"... for its copies
    int tid;
    std::vector<std::pair<std::uint64_t, std::uint64_t>> spans;
  };

  // The thread a slice from `from` to `to` goes on.
  int place(const std::string& name, std::uint64_t from, std::uint64_t to);
  // Threads asked for before any slice, so they keep their order.
  void reserve(const std::string& name);
  const std::vector<slot>& slots() const { return slots_; }

 private:
  std::vector<slot> slots_;
};

}  // namespace inspect
