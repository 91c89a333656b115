#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <IOKit/IOKitLib.h>

#include <cstddef>
#include <cstdint>
#include <string>

// A service by designation: "0x<hex>" or decimal digits are a service id,
// anything else a name tried as "ZOL_<name>" and then as given. 0 when none.
// The caller releases the handle. Raises std::invalid_argument for an id
// designation that holds no number.
io_service_t find_service(const std::string& name);

CFMutableDictionaryRef matching_by_service_id(std::uint32_t id);
CFMutableDictionaryRef matching_by_name(const char* text);

// One command on a service: find, open, call selector 2, close, release.
// `length` holds the capacity on entry and the bytes delivered on return.
kern_return_t call_command(const std::string& service, std::uint32_t command,
                           void* buffer, std::size_t* length);

// A user-client connection held open across calls; releases what it holds.
class service_conn {
 public:
  explicit service_conn(std::string service_name);
  virtual ~service_conn();
  service_conn(const service_conn&) = delete;
  service_conn& operator=(const service_conn&) = delete;

  bool open(bool quiet);

  std::string name;
  io_connect_t connect = 0;
  io_service_t service = 0;
  io_registry_entry_t child = 0;
};

class profiler_conn : public service_conn {
 public:
  using service_conn::service_conn;
  ~profiler_conn() override;

  std::uint64_t mapped_address = 0;
  mach_vm_size_t mapped_length = 0;
};

// Builders for the HID matching dictionary; each consumes what it is given.
CFNumberRef make_number(std::int32_t value);
CFMutableArrayRef make_array(CFTypeRef first, ...);  // null-terminated
CFDictionaryRef make_usage_pair(CFNumberRef page, CFNumberRef usage);
CFDictionaryRef make_usage_pairs(CFArrayRef pairs);
