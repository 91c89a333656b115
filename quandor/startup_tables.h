#pragma once

#include <cstdint>
#include <map>
#include <string>

// The common signature of the report printers. `buffer` is the caller's
// reply buffer: printers read their record at fixed offsets of it, whatever
// `length` says, so it must be as large as the record the command returns.
using dump_fn = void (*)(const std::string& service, std::uint32_t command,
                         std::uint8_t* buffer, std::uint64_t length);

// Process-wide tables, built before main in this order and destroyed in
// reverse. Subscript lookups insert on a miss, as the printers rely on.
extern std::string hex_prefix;
extern std::string dec_prefix;
extern std::map<std::uint32_t, dump_fn> dump_registry;
extern std::map<std::uint32_t, std::string> click_speed_names;
extern std::map<std::uint32_t, std::string> button_state_names;
