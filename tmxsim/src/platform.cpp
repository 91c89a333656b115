#include "platform.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "embedded_default.h"

namespace tmxsim {
namespace {

// A description file larger than this is refused unread.
constexpr long max_file_size = 512L << 20;

#ifdef MAP_POPULATE
constexpr int populate = MAP_POPULATE;
#else
constexpr int populate = 0;
#endif

bool mappable(const struct stat& info) {
  return S_ISREG(info.st_mode) && info.st_size > 0 && info.st_size <= max_file_size;
}

// A regular description file mapped into memory, with description_padding
// readable bytes after it. A bulk description runs to megabytes, and copying
// them into fresh memory would take most of the start-up. As with any mapped
// file, one cut short while it is read ends the process with SIGBUS.
class mapped_file {
 public:
  // text() is empty if the file is not mapped.
  explicit mapped_file(const char* path) {
    // stat first: a FIFO opened only to be looked at would lose its writer.
    struct stat info {};
    if (stat(path, &info) != 0 || !mappable(info)) return;
    const int file = open(path, O_RDONLY | O_CLOEXEC);
    if (file < 0) return;
    map(file);
    close(file);
  }
  mapped_file(const mapped_file&) = delete;
  mapped_file& operator=(const mapped_file&) = delete;
  ~mapped_file() {
    if (area_ != nullptr) munmap(area_, area_size_);
  }

  std::string_view text() const { return {static_cast<const char*>(area_), size_}; }

 private:
  void map(int file) {
    struct stat info {};
    const long page = sysconf(_SC_PAGESIZE);
    if (fstat(file, &info) != 0 || !mappable(info) || page <= 0) return;
    const auto size = static_cast<std::size_t>(info.st_size);
    const auto page_size = static_cast<std::size_t>(page);
    const std::size_t area_size =
        (size + description_padding + page_size - 1) / page_size * page_size;
    // Zero pages hold the padding; the file is mapped over their start.
    void* area = mmap(nullptr, area_size, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (area == MAP_FAILED) return;
    if (mmap(area, size, PROT_READ, MAP_PRIVATE | MAP_FIXED | populate, file, 0) == MAP_FAILED) {
      munmap(area, area_size);
      return;
    }
    area_ = area;
    area_size_ = area_size;
    size_ = size;
  }

  void* area_ = nullptr;
  std::size_t area_size_ = 0;
  std::size_t size_ = 0;
};

// "" or the one-line error.
std::string read_file(const char* path, std::string& text) {
  std::FILE* file = std::fopen(path, "rb");
  if (file == nullptr)
    return "tmxsim: " + std::string(path) + ": cannot open: " + std::strerror(errno);
  // Room for the whole file at once where its size can be told: a bulk
  // description runs to megabytes.
  if (std::fseek(file, 0, SEEK_END) == 0) {
    const long size = std::ftell(file);
    if (size > 0 && size <= max_file_size)
      text.reserve(static_cast<std::size_t>(size) + description_padding);
    std::rewind(file);
  }
  char buffer[65536];
  std::size_t count = 0;
  while ((count = std::fread(buffer, 1, sizeof buffer, file)) > 0) {
    if (text.size() + count > static_cast<std::size_t>(max_file_size)) {
      std::fclose(file);
      return "tmxsim: " + std::string(path) + ": larger than 512 MiB";
    }
    text.append(buffer, count);
  }
  const bool failed = std::ferror(file) != 0;
  const int error = errno;
  std::fclose(file);
  if (failed)
    return "tmxsim: " + std::string(path) + ": cannot read: " + std::strerror(error);
  return "";
}

[[noreturn]] void stop(std::string&& line) {
  std::fprintf(stderr, "%s\n", line.c_str());
  std::string().swap(line);  // exit does not unwind, so the text is freed here
  std::exit(2);
}

void write_audit() {
  platform& state = the_platform();
  const audit_counts counts = count_audit(state);
  state.log.finish("audit io_objects=" + std::to_string(counts.io_objects) +
                   " connections=" + std::to_string(counts.connections) +
                   " cf_objects=" + std::to_string(counts.cf_objects) +
                   " misuse=" + std::to_string(counts.misuse));
}

// The platform outlives the program's static objects and exit handlers,
// which may still call in, and is freed after all of them.
platform* started = nullptr;

void free_platform() {
  delete started;
  started = nullptr;
}

platform* start_platform() {
  auto* state = new platform;
  started = state;
  std::atexit(free_platform);
  std::string error;
  if (const char* path = std::getenv("TMXSIM_DEVICE")) {
    const mapped_file mapped(path);
    if (!mapped.text().empty()) {
      error = install_description(*state, mapped.text(), path, true);
    } else {
      // Whatever is not mapped is read, and its faults named, as ever.
      std::string text;
      error = read_file(path, text);
      if (error.empty()) {
        const std::size_t size = text.size();
        text.append(description_padding, '\0');
        error = install_description(*state, {text.data(), size}, path, true);
      }
    }
  } else {
    error = install_description(*state, embedded_default_description(), default_origin, true);
  }
  if (!error.empty()) stop(std::move(error));

  if (const char* path = std::getenv("TMXSIM_LOG")) {
    if (!state->log.open(path))
      stop("tmxsim: " + std::string(path) + ": cannot open the call log: " +
           std::strerror(errno));
    // Registered before the program's own static objects are built, so it
    // runs after they are destroyed.
    std::atexit(write_audit);
  }
  return state;
}

// Runs ahead of every ordinary static initialiser, so the phone is in place,
// or the process ended, before the program's own start-up code runs. Nothing
// of this library may depend on dynamic initialisation for the same reason.
__attribute__((constructor(101))) void start_before_main() { the_platform(); }

}  // namespace

platform* started_platform = nullptr;

platform& start_the_platform() {
  static platform* const state = start_platform();
  started_platform = state;
  return *state;
}

void count_misuse(platform& state, const char* rule) {
  ++state.misuse;
  state.log.note_misuse(rule);
}

cf_value* find_live_elsewhere(platform& state, const void* ref) {
  cf_value* value = state.cf.find(ref);
  if (value == nullptr && ref != nullptr) count_misuse(state, "not a live object");
  return value;
}

void log_type_id(platform& state, const char* call, CFTypeID id) {
  log_line(state.log, call).returns().number(static_cast<std::int64_t>(id));
}

std::string install_description(platform& state, std::string_view json,
                                 std::string_view origin, bool padded) {
  parse_result parsed = parse_description(json, origin, padded);
  state.phone.model = std::move(parsed.phone);
  reset_platform(state);
  return parsed.error;
}

void reset_platform(platform& state) {
  state.cf.reset();
  state.handles.reset();
  rewind_answers(state.phone.model);
  build_properties(state.phone, state.cf);
  state.misuse = 0;
}

audit_counts count_audit(platform& state) {
  return {state.handles.count(handle_kind::entry),
          state.handles.count(handle_kind::connection),
          state.cf.owned_references(), state.misuse};
}

}  // namespace tmxsim
