#pragma once

#include <cstdint>
#include <string>

// Report printers, all of type dump_fn (startup_tables.h).

// Statistics of the last button press (command 0xd7).
void print_pkey_stats(const std::string& service, std::uint32_t command,
                      std::uint8_t* buffer, std::uint64_t length);

// State dumps 0xd0..0xed of any service, chosen by service name and command.
void print_state_dump(const std::string& service, std::uint32_t command,
                      std::uint8_t* buffer, std::uint64_t length);

// Input-report error statistics (command 0xe3).
void print_input_report_errors(const std::string& service,
                               std::uint32_t command, std::uint8_t* buffer,
                               std::uint64_t length);

// Transfer-error table (command 0x45). Terminates each entry's name in place.
void print_transfer_errors(const std::string& service, std::uint32_t command,
                           std::uint8_t* buffer, std::uint64_t length);

// Haptic asset table (command 0xd8).
void print_haptic_assets(const std::string& service, std::uint32_t command,
                         std::uint8_t* buffer, std::uint64_t length);
