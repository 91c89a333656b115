#include "bench_phone.h"

#include <IOKit/IOKitLib.h>
#include <fcntl.h>
#include <tmxsim/control.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <span>
#include <sstream>
#include <string>

#include "quandor/service.h"

namespace {

constexpr std::size_t record_size = std::tuple_size_v<record_bytes>;

void append_records(std::vector<record_bytes>& records, std::span<const std::uint8_t> bytes) {
  for (std::size_t offset = 0; bytes.size() - offset >= record_size; offset += record_size) {
    record_bytes& record = records.emplace_back();
    std::memcpy(record.data(), bytes.data() + offset, record_size);
  }
}

std::vector<record_bytes> drain_both_logs() {
  std::vector<record_bytes> records;
  std::vector<std::uint8_t> buffer(0x10000);
  for (;;) {
    std::size_t length = buffer.size();
    if (call_command("profile", 209, buffer.data(), &length) != KERN_SUCCESS || length == 0)
      break;
    append_records(records, std::span(buffer).first(length));
  }
  profiler_conn connection("ZOL_profile");
  if (connection.open(true)) {
    for (;;) {
      std::size_t size = 48000;
      if (IOConnectCallMethod(connection.connect, 9, nullptr, 0, nullptr, 0, nullptr,
                              nullptr, buffer.data(), &size) != KERN_SUCCESS ||
          size < record_size)
        break;
      append_records(records, std::span(buffer).first(size));
    }
  }
  return records;
}

}  // namespace

void load_full_drain() {
  std::ifstream file(KELVRA_FULL_DRAIN, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  const std::string error = tmxsim::load_description(text.str(), KELVRA_FULL_DRAIN);
  if (!file || !error.empty()) {
    std::fprintf(stderr, "kelvra_bench: %s: %s\n", KELVRA_FULL_DRAIN,
                 error.empty() ? "cannot read" : error.c_str());
    std::exit(2);
  }
}

const std::vector<record_bytes>& full_drain_records() {
  static const std::vector<record_bytes> records = [] {
    std::vector<record_bytes> drained = drain_both_logs();
    load_full_drain();
    if (drained.size() != 23650) {
      std::fprintf(stderr, "kelvra_bench: the full-drain phone gave %zu records\n",
                   drained.size());
      std::exit(2);
    }
    return drained;
  }();
  return records;
}

stdout_to_null::stdout_to_null() {
  std::fflush(stdout);
  saved_ = dup(STDOUT_FILENO);
  const int null = open("/dev/null", O_WRONLY);
  dup2(null, STDOUT_FILENO);
  close(null);
}

stdout_to_null::~stdout_to_null() {
  std::fflush(stdout);
  dup2(saved_, STDOUT_FILENO);
  close(saved_);
}
