// Every printer: the dump registry and the state dumps, the hex dump they
// fall back to, input-report and transfer errors, the button's statistics and
// haptic asset table, and one decoded profile line, which goes through a
// CoreFoundation string on its way out: text outside ASCII must still reach
// standard output.

#include <tmxsim/control.h>

#include <algorithm>

#include "quandor/hexdump.h"
#include "quandor/printers.h"
#include "quandor/profile_retrieval.h"
#include "quandor/startup_tables.h"
#include "test_record.h"

namespace {

std::string hex(const std::uint8_t* bytes, std::size_t size, const char* label = nullptr) {
  return stdout_of([&] { hexdump(bytes, size, label); });
}

std::string dump(const std::string& service, std::uint32_t command,
                 std::vector<std::uint8_t>& buffer, std::uint64_t length) {
  return stdout_of([&] { print_state_dump(service, command, buffer.data(), length); });
}

TEST(dump_registry, the_printer_of_each_dump_command) {
  for (std::uint32_t command = 0xd0; command <= 0xed; ++command)
    EXPECT_EQ(dump_registry.at(command),
              command == 0xe3 ? print_input_report_errors : print_state_dump) << command;
  EXPECT_EQ(dump_registry.at(0x45), print_transfer_errors);
}

TEST(hexdump, partial_last_line_keeps_the_separator_column_and_labels_every_line) {
  std::vector<std::uint8_t> bytes(20);
  EXPECT_EQ(hex(bytes.data(), 0, "x"), "");
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<std::uint8_t>(i);
  EXPECT_EQ(hex(bytes.data(), bytes.size()),
            "00000000: 00 01 02 03 04 05 06 07  08 09 0a 0b 0c 0d 0e 0f  | ........ ........\n"
            "00000010: 10 11 12 13 " + std::string(12 * 3 + 1, ' ') + " | ....\n");
  // A label on each line; dots for blank, DEL and high bytes.
  bytes.assign({0x20, 0x41, 0x7f, 0x80, 0x21, 0x7e, 0xff, 0x1f});
  bytes.resize(32, 'z');
  EXPECT_EQ(hex(bytes.data(), bytes.size(), "dev"),
            "dev 00000000: 20 41 7f 80 21 7e ff 1f  7a 7a 7a 7a 7a 7a 7a 7a  | .A..!~.. zzzzzzzz\n"
            "dev 00000010: 7a 7a 7a 7a 7a 7a 7a 7a  7a 7a 7a 7a 7a 7a 7a 7a  | zzzzzzzz zzzzzzzz\n");
}

TEST(state_dump, varsium_scan_state_with_derived_values) {
  std::vector<std::uint8_t> buffer(reply_size);
  const std::int32_t values[] = {-32768, 6, 7, 0, 0, 8, 3, 2, 1, 5};
  for (std::size_t i = 0; i < 10; ++i) put(buffer, 4 * i, values[i]);
  EXPECT_EQ(dump("varsium", 0xd0, buffer, 40),
            "scanState                      : 2\n"
            "nextScan in                    : 2.56 sec\n"
            "numLoFiReads                   : 3\n"
            "numFramesSinceOnWrist          : 8\n"
            "numLoFiScans_Accepted          : 5\n"
            "numLoFiScans_Rejected          : 4294967294\n\n"
            "waitNumFramesAfterSuccess      : 7\n"
            "motionTriggerNumFrames         : 6\n"
            "accelVarThreshold              : -0.5\n\n");
  EXPECT_EQ(dump("varsium", 0x1234, buffer, 1), dump("varsium", 0xd0, buffer, 40));
}

// The button's counts print the application processor's before the ZOL's.
TEST(state_dump, power_state_of_lyn_and_btmspk_only_for_0xd0_and_button_counts) {
  std::vector<std::uint8_t> buffer(reply_size);
  for (std::uint32_t i = 0; i < 3; ++i) put(buffer, 4 * i, i + 1);
  const std::string fields = "power state   : 1\nAP request    : 2\nZOL request   : 3\n";
  EXPECT_EQ(dump("lyn", 0xd0, buffer, 12), "lyn State\n" + fields);
  EXPECT_EQ(dump("btmspk", 0xd0, buffer, 12), "btmspk State\n" + fields);
  EXPECT_EQ(dump("lyn", 0xd1, buffer, 12), hex(buffer.data(), 12));
  buffer[0] = 7;
  put<std::uint32_t>(buffer, 1, 11);
  put<std::uint32_t>(buffer, 5, 0x10000);
  const std::string counts = "Enable        : 1\nAP ref        : 65536\nZOL ref       : 11\n";
  EXPECT_EQ(dump("zol-button", 0xd0, buffer, 9), "PKEY MCLK Counts\n" + counts);
  EXPECT_EQ(dump("zol-button", 0xd1, buffer, 9), "PKEY PellamEN Counts\n" + counts);
}

TEST(state_dump, button_forwards_stats_and_assets_and_dumps_the_rest) {
  std::vector<std::uint8_t> buffer(reply_size);
  EXPECT_TRUE(dump("zol-button", 0xd7, buffer, 2000).starts_with("pkey_stats\n"));
  EXPECT_TRUE(dump("zol-button", 0xd8, buffer, 1200).starts_with("Length: 1200, expected 1200\n"));
  const std::string plain = hex(buffer.data(), 4);
  EXPECT_EQ(dump("zol-button", 0xd2, buffer, 4), plain);
  EXPECT_EQ(dump("Zol-button", 0xd0, buffer, 4), plain);
  EXPECT_EQ(dump("mux", 0xd1, buffer, 4), plain);
  EXPECT_EQ(dump("zol-button", 0xd0, buffer, 0), "");
  EXPECT_EQ(stdout_of([] { print_state_dump("lyn", 0xd0, nullptr, 12); }), "");
}

TEST(state_dump, mux_samples_one_line_a_whole_entry) {
  std::vector<std::uint8_t> buffer(reply_size);
  put<std::uint64_t>(buffer, 0, 1234);
  put<std::uint32_t>(buffer, 8, 0x5);
  put<std::uint64_t>(buffer, 12, 7);
  put<std::uint32_t>(buffer, 20, 0x1ab);
  EXPECT_EQ(dump("mux", 0xd0, buffer, 11), "");
  EXPECT_EQ(dump("mux", 0xd0, buffer, 25), "data: 5 timestamp:1234\ndata:1ab timestamp:7\n");
}

TEST(input_report_errors, heading_then_counters_in_print_order) {
  std::vector<std::uint8_t> buffer(reply_size);
  for (std::int32_t i = 0; i < 15; ++i) put(buffer, 4 * i, i + 1);
  put<std::int32_t>(buffer, 48, -2);
  EXPECT_EQ(stdout_of([&] { print_input_report_errors("zol-button", 0xe3, buffer.data(), 60); }),
            "=========== (input report) error stats for <service_id>: zol-button===========\n"
            "_total_packets_tmx_received         # 11\n"
            "_total_packets_sent_to_ap           # 12\n"
            "_resets_since_boot                  # -2\n"
            "_packet_drops                       # 1\n"
            "_pt_invalid_packets(debug)          # 15\n"
            "_duplicate_packet_drops             # 14\n"
            "_chksum_errors                      # 10\n"
            "\n"
            "_total_status_errors                # 2\n"
            "  _status_IOReturnError             # 3\n"
            "  _status_IOReturnNotReady          # 4\n"
            "  _status_IOReturnNotPermitted      # 5\n"
            "  _status_IOReturnUnsupported       # 6\n"
            "  _status_IOReturnBadArgument       # 7\n"
            "  _status_IOReturnIOError           # 8\n"
            "  _status_IOReturnInternalError     # 9\n"
            "\n");
  EXPECT_EQ(stdout_of([&] { print_input_report_errors("x", 0xe3, buffer.data(), 0); }), "");
}

TEST(transfer_errors, one_printf_line_an_entry_with_a_terminated_name) {
  std::vector<std::uint8_t> buffer(reply_size);
  const std::int32_t counts[] = {100, 1, 200, 2, 300, -3};
  for (std::size_t i = 0; i < 6; ++i) put(buffer, 4 * i, counts[i]);
  std::memcpy(buffer.data() + 24, "spi", 3);
  std::memcpy(buffer.data() + 32 + 24, "ABCDEFGH", 8);
  buffer[95] = 'x';
  const auto print = [&](std::uint64_t length) {
    return stdout_of([&] { print_transfer_errors("x", 0x45, buffer.data(), length); });
  };
  EXPECT_EQ(print(31), "");
  EXPECT_EQ(print(2 * 32 + 31),
            "spi             read_errors: 1/100 write_errors: 2/200 other_errors: -3/300\n"
            "ABCDEFG         read_errors: 0/0 write_errors: 0/0 other_errors: 0/0\n");
  EXPECT_EQ(buffer[63], 0);
  EXPECT_EQ(buffer[95], 'x');  // past the whole entries: untouched
}

// A 60-character label: the caption padded to 58, then ": ".
std::string line(const std::string& caption, const std::string& value) {
  return caption + std::string(58 - caption.size(), ' ') + ": " + value + "\n";
}

std::string stats(std::uint8_t* buffer, std::uint64_t length) {
  return stdout_of([&] { print_pkey_stats("zol-button", 215, buffer, length); });
}

std::string listing(std::vector<std::uint8_t>& buffer, std::uint64_t length) {
  return stdout_of([&] { print_haptic_assets("zol-button", 0xd8, buffer.data(), length); });
}

// Entry (speed, state) of the table: enable, gain, min, max, slot.
void put_asset(std::vector<std::uint8_t>& buffer, std::size_t speed, std::size_t state,
               std::uint8_t enable, std::int32_t gain, std::uint64_t min, std::int32_t slot) {
  const std::size_t entry = 400 * speed + 25 * state;
  buffer[entry] = enable;
  put(buffer, entry + 1, gain);
  put(buffer, entry + 5, min);
  put(buffer, entry + 13, min + 500);
  put(buffer, entry + 21, slot);
}

TEST(pkey_stats, every_field_in_print_order_whatever_the_length) {
  std::vector<std::uint8_t> buffer(2000);
  // Finger on, finger off, start haptics, finger detect to down: 1000 to 4000.
  for (std::uint64_t field = 0; field < 4; ++field) put(buffer, 8 * field, 1000 * (field + 1));
  // Button, play-asset and latency times of the six edges: 100s, 200s and 300s.
  for (std::uint64_t block = 0; block < 3; ++block)
    for (std::uint64_t edge = 0; edge < 6; ++edge)
      put(buffer, 88 + 48 * block + 8 * edge, 100 * (block + 1) + edge);
  put<std::uint32_t>(buffer, 233, 7);
  put<std::uint64_t>(buffer, 266, 995);  // second scan, before finger on
  put<std::uint32_t>(buffer, 274, 0x01020304);
  put<std::uint32_t>(buffer, 278, 5);

  std::string expected = "pkey_stats\n-- Last Button Press --\n" + line("Click Count", "3") +
                         line("Finger ON Timestamp", "1000 us") +
                         line("Start Haptics Timestamp", "3000 us") +
                         line("Latency - Finger Detect to Button Down", "4000 us");
  for (int k = 0; k < 3; ++k) {
    const auto us = [&](int base, int up) { return std::to_string(base + 2 * k + up) + " us"; };
    expected += "--Click " + std::to_string(k + 1) + "--\n" +
                line("Latency   - Button Down to Play Asset", us(300, 0)) +
                line("Timestamp - Button Down", us(100, 0)) +
                line("Timestamp - Button Down Play Asset", us(200, 0)) +
                line("Latency   - Button Up to Play Asset", us(300, 1)) +
                line("Timestamp - Button Up", us(100, 1)) +
                line("Timestamp - Button Up Play Asset", us(200, 1));
  }
  expected += line("Second scan delta from FD", "18446744073709551611 us") +
              line("Num Gorvin Scans", "16909060") + line("Num Lumet Scans", "5") +
              line("Finger OFF Timestamp", "2000 us") + "\n\n\n";
  EXPECT_EQ(stats(buffer.data(), 2000), expected);
  EXPECT_EQ(stats(buffer.data(), 1), expected);
  EXPECT_EQ(stats(buffer.data(), 0), "");
  EXPECT_EQ(stats(nullptr, 2000), "");
}

TEST(haptic_assets, length_line_then_48_named_assets_and_a_short_or_long_reply) {
  std::vector<std::uint8_t> buffer(reply_size);
  put_asset(buffer, 0, 0, 1, 65536, 0, 3);
  put_asset(buffer, 1, 0, 0, 0x18000, 1, 0);
  put_asset(buffer, 2, 15, 2, -32768, 7, -1);
  const std::string out = listing(buffer, 1200);
  EXPECT_TRUE(out.starts_with("Length: 1200, expected 1200\n"
                              "ASSET [Slow][SingleDown]: enable 1, slot 3, gain 1, min 0, max 500\n"
                              "ASSET [Slow][SingleUp]: enable 0, slot 0, gain 0, min 0, max 0\n"));
  EXPECT_NE(out.find("\nASSET [Slow][LongPressUp]: enable 0, slot 0, gain 0, min 0, max 0\n"
                     "ASSET [Medium][SingleDown]: enable 0, slot 0, gain 1.5, min 1, max 501\n"),
            std::string::npos);
  EXPECT_TRUE(out.ends_with(
      "\nASSET [Fast][LongPressUp]: enable 1, slot -1, gain -0.5, min 7, max 507\n"));
  // A short reply reads zeros after it; a long one is cut to the table.
  buffer.assign(reply_size, 0xff);
  EXPECT_TRUE(listing(buffer, 25).starts_with(
      "Length: 25, expected 1200\n"
      "ASSET [Slow][SingleDown]: enable 1, slot -1, gain -1.52588e-05, "
      "min 18446744073709551615, max 18446744073709551615\n"
      "ASSET [Slow][SingleUp]: enable 0, slot 0, gain 0, min 0, max 0\n"));
  const std::string cut = listing(buffer, 4096);
  EXPECT_TRUE(cut.starts_with("Length: 4096, expected 1200\n"));
  EXPECT_EQ(std::count(cut.begin(), cut.end(), '\n'), 49);
  EXPECT_EQ(listing(buffer, 0), "");
}

// The printed line of a sensors client-configuration record (type id 8)
// whose name is `name`.
std::string printed_line(const char* name) {
  std::vector<std::uint8_t> record(48);
  put<std::uint32_t>(record, 0, 0x02000008);
  std::memcpy(record.data() + 36, name, std::strlen(name));
  return stdout_of([&] { print_profile_record(record.data()); });
}

TEST(profile_line, text_outside_ascii_is_still_written_and_not_utf8_writes_nothing) {
  ASSERT_EQ(tmxsim::load_description("{}", "no clock"), "");
  const std::string out = printed_line("caf\xc3\xa9");
  // Seven bytes of quoted name, padded to sixteen.
  EXPECT_NE(out.find(" 'name':         'caf\xc3\xa9', 'client':"), std::string::npos) << out;
  EXPECT_EQ(out.substr(out.size() - 3), "]}\n");
  EXPECT_EQ(printed_line("\xff\xfe"), "");
  EXPECT_EQ(tmxsim::audit().cf_objects, 0);
  tmxsim::load_default_description();
}

}  // namespace
