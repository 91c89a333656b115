// The texts of kernel results, as the phone returns them.

#include <gtest/gtest.h>
#include <mach/mach_error.h>

#include <algorithm>
#include <cstdint>
#include <span>

namespace {

struct expected_text {
  std::int64_t value;  // as written: hexadecimal, or a signed old number
  const char* text;    // null: the phone returns a null pointer
};

const char* text_of(std::int64_t value) {
  return mach_error_string(static_cast<mach_error_t>(static_cast<std::uint32_t>(value)));
}

void expect_texts(std::span<const expected_text> rows) {
  for (const expected_text& row : rows)
    EXPECT_STREQ(text_of(row.value), row.text)
        << std::hex << "0x" << static_cast<std::uint32_t>(row.value);
}

constexpr expected_text worked_examples[] = {
    {0x00000000, "(os/kern) successful"},
    {0x00000001, "(os/kern) invalid address"},
    {0x00000003, "(os/kern) no space available"},
    {0x00000004, "(os/kern) invalid argument"},
    {0x10000003, "(ipc/send) invalid destination port"},
    {0xe00002bc, "(iokit/common) general error"},
    {0xe00002c2, "(iokit/common) invalid argument"},
    {0xe00002c7, "(iokit/common) unsupported function"},
    {0xe00002cb, "(iokit/common) ???"},
    {0xe00002d8, "(iokit/common) not ready"},
    {0xe00002f0, "(iokit/common) data was not found"},
    {0xe00002ff, "unknown error code"},
    {0xe0000300, "unknown error code"},
    {0xe0004000, "unknown error code"},
    {0x12345678, "(ipc/?) unknown subsystem error"},
    {0xffffffff, nullptr},
    {0xffffff9c, "(ipc/send) unknown error"},
    {0xfffffed4, "(ipc/mig) client type check failure"},
    {0xfffffe70, nullptr},
    {0x000003e8, "(server/netname) name is not yours"},
    {0x00000640, "unknown error code"},
    {0x00000039, "unknown error code"},
    {0x0000c002, "(os/unix) file or directory does not exist"},
    {0x00010000, "(operating system/?) unknown subsystem error"},
    {0x04000000, "unknown error code"},
    {0x1c000001, "(ipc/send) send in progress"},
    {0x20004001, nullptr},
    {0xdc000001, "(libkern/common) general/unspecified error"},
    {0xe0000000, "unknown error code"},
    {0xe0000001, "(iokit/common) invalid - should never be seen"},
    {0xe0024000, "(iokit/?) unknown subsystem error"},
    {0xe3ff8000, "(iokit/?) unknown subsystem error"},
};

TEST(mach_error, worked_examples) { expect_texts(worked_examples); }

// The last text of every table; the code after it has none.
constexpr expected_text last_texts[] = {
    {0x00000038, "(os/kern) result not found"},
    {0x0000c045, "(os/unix) quota on available disk space exceeded"},
    {0x08000003, "(server/netname) host not found"},
    {0x08004007, "(server/env_mgr) attempting to enter a null port "},
    {0x08008003, "(server/execd) fork failed"},
    {0x0800c002, "(server/netmemory) resource shortage"},
    {0x08014005, "(server/task_master) invalid action"},
    {0x08018011, "(server/ns) entry not reserved"},
    {0x0801c005, "(server/io) operation rejected under current I/O strategy"},
    {0x08020008, "(server/auth) not secondary"},
    {0x08024017, "(server/us) internal error"},
    {0x08028011, "(server/sunrpc) unknown protocol"},
    {0x0802c005, "(server/object system) bad ipc message format"},
    {0x08030005, "(server/loader) memory region overlap"},
    {0x08034006, "(server/exception) breakpoint exception"},
    {0x0803801d, "(server/unix-signal) user-defined signal 2"},
    {0x0803c00c, "(server/xkernel) bad addr"},
    {0x0c00000b, "(ipc/send) message size changed while being copied"},
    {0x0c004008, "(ipc/rcv) port receiver changed or port became enabled"},
    {0x0c008007, "(ipc/mig) user specified array not large enough for return info"},
    {0x10000016, "(ipc/send) destination does not accept OOL ports"},
    {0x10004010, "(ipc/rcv) DIPC transport error"},
    {0x10008009, "(ipc/mig) unknown trailer format"},
    {0x1c000001, "(ipc/send) send in progress"},
    {0x1c004007, "(vm/reclaim) invalid ring"},
    {0xdc000001, "(libkern/common) general/unspecified error"},
    {0xdc00400b, "(libkern/metaclass) no kext for metaclass"},
    {0xdc00801f, "(libkern/kext) loading of both Auxiliary and System KCs failed"},
    {0xe00002f0, "(iokit/common) data was not found"},
};

TEST(mach_error, every_table_ends_at_its_last_text) {
  expect_texts(last_texts);
  for (const expected_text& row : last_texts)
    EXPECT_STREQ(text_of(row.value + 1), "unknown error code")
        << std::hex << "0x" << row.value + 1;
}

constexpr expected_text fallbacks[] = {
    {0x03ffffff, "(operating system/?) unknown subsystem error"},
    {0x04004000, "(user space/?) unknown subsystem error"},
    {0x08040000, "(server/?) unknown subsystem error"},
    {0x0c00c000, "(ipc/?) unknown subsystem error"},
    {0x1000c000, "(ipc/?) unknown subsystem error"},
    {0x1c008000, "(vm/?) unknown subsystem error"},
    {0xdc00c000, "(libkern/?) unknown subsystem error"},
    {0xe3ffffff, "(iokit/?) unknown subsystem error"},
    {0x00004000, "unknown error code"},
    {0x0000bfff, "unknown error code"},
    {0x0000c000, "unknown error code"},
    {0x08004000, "unknown error code"},
    {0x08008000, "unknown error code"},
    {0x08010000, "unknown error code"},
    {0xdc000000, "unknown error code"},
    {0xdc004000, "unknown error code"},
    {0xdc008000, "unknown error code"},
};

TEST(mach_error, unknown_subsystems_and_codes_without_texts) { expect_texts(fallbacks); }

struct coded_text {
  std::uint32_t code;
  const char* text;
};

constexpr coded_text iokit_common_texts[] = {
    {0x001, "(iokit/common) invalid - should never be seen"},
    {0x2bc, "(iokit/common) general error"},
    {0x2bd, "(iokit/common) can't allocate memory"},
    {0x2be, "(iokit/common) resource shortage"},
    {0x2bf, "(iokit/common) error during IPC"},
    {0x2c0, "(iokit/common) no such device"},
    {0x2c1, "(iokit/common) privilege violation"},
    {0x2c2, "(iokit/common) invalid argument"},
    {0x2c3, "(iokit/common) device read locked"},
    {0x2c4, "(iokit/common) device write locked"},
    {0x2c5, "(iokit/common) exclusive access and device already open"},
    {0x2c6, "(iokit/common) sent/received messages had different msg_id"},
    {0x2c7, "(iokit/common) unsupported function"},
    {0x2c8, "(iokit/common) misc. VM failure"},
    {0x2c9, "(iokit/common) internal error"},
    {0x2ca, "(iokit/common) General I/O error"},
    {0x2cb, "(iokit/common) ???"},
    {0x2cc, "(iokit/common) can't acquire lock"},
    {0x2cd, "(iokit/common) device not open"},
    {0x2ce, "(iokit/common) read not supported"},
    {0x2cf, "(iokit/common) write not supported"},
    {0x2d0, "(iokit/common) alignment error"},
    {0x2d1, "(iokit/common) Media Error"},
    {0x2d2, "(iokit/common) device(s) still open"},
    {0x2d3, "(iokit/common) rld failure"},
    {0x2d4, "(iokit/common) DMA failure"},
    {0x2d5, "(iokit/common) Device Busy"},
    {0x2d6, "(iokit/common) I/O Timeout"},
    {0x2d7, "(iokit/common) device offline"},
    {0x2d8, "(iokit/common) not ready"},
    {0x2d9, "(iokit/common) device not attached"},
    {0x2da, "(iokit/common) no DMA channels left"},
    {0x2db, "(iokit/common) no space for data"},
    {0x2dc, "(iokit/common) ???"},
    {0x2dd, "(iokit/common) port already exists"},
    {0x2de, "(iokit/common) can't wire down physical memory"},
    {0x2df, "(iokit/common) no interrupt attached"},
    {0x2e0, "(iokit/common) no DMA frames enqueued"},
    {0x2e1, "(iokit/common) oversized msg received on interrupt port"},
    {0x2e2, "(iokit/common) not permitted"},
    {0x2e3, "(iokit/common) no power to device"},
    {0x2e4, "(iokit/common) media not present"},
    {0x2e5, "(iokit/common) media not formatted"},
    {0x2e6, "(iokit/common) no such mode"},
    {0x2e7, "(iokit/common) data underrun"},
    {0x2e8, "(iokit/common) data overrun"},
    {0x2e9, "(iokit/common) the device is not working properly!"},
    {0x2ea, "(iokit/common) a completion routine is required"},
    {0x2eb, "(iokit/common) operation aborted"},
    {0x2ec, "(iokit/common) bus bandwidth would be exceeded"},
    {0x2ed, "(iokit/common) device not responding"},
    {0x2ee, "(iokit/common) isochronous I/O request for distant past!"},
    {0x2ef, "(iokit/common) isochronous I/O request for distant future"},
    {0x2f0, "(iokit/common) data was not found"},
};

TEST(mach_error, every_code_of_iokit_common) {
  for (std::uint32_t code = 0; code <= 0x3fff; ++code) {
    const char* expected = "unknown error code";
    for (const coded_text& known : iokit_common_texts)
      if (known.code == code) expected = known.text;
    ASSERT_STREQ(text_of(0xe0000000 | code), expected) << std::hex << "code 0x" << code;
  }
}

TEST(mach_error, the_phone_has_nine_iokit_subsystems) {
  for (std::uint32_t subsystem = 1; subsystem <= 0xfff; ++subsystem) {
    const char* expected =
        subsystem <= 8 ? "unknown error code" : "(iokit/?) unknown subsystem error";
    for (const std::uint32_t code : {0x000u, 0x001u, 0x2c2u, 0x3fffu})
      ASSERT_STREQ(text_of(0xe0000000 | subsystem << 14 | code), expected)
          << std::hex << "subsystem 0x" << subsystem << " code 0x" << code;
  }
}

TEST(mach_error, empty_system_slots_give_a_null_pointer) {
  constexpr std::uint32_t populated[] = {0x00, 0x01, 0x02, 0x03, 0x04, 0x07, 0x37, 0x38};
  for (std::uint32_t system = 0; system < 64; ++system) {
    if (std::ranges::find(populated, system) != std::end(populated)) continue;
    for (const std::uint32_t rest : {0x0000000u, 0x0000001u, 0x00042c2u, 0x3ffffffu})
      ASSERT_EQ(text_of(system << 26 | rest), nullptr)
          << std::hex << "system 0x" << system << " rest 0x" << rest;
  }
  // Small negative numbers are system 0x3f, except the old ones moved away.
  for (std::int32_t value = -1; value >= -1000; --value) {
    const bool moved = value <= -100 && value >= -399;
    ASSERT_EQ(text_of(value) == nullptr, !moved) << value;
  }
  EXPECT_EQ(text_of(-67108864), nullptr);
  EXPECT_EQ(text_of(INT32_MIN), nullptr);
}

constexpr expected_text old_numbers[] = {
    {-100, "(ipc/send) unknown error"},
    {-111, "(ipc/send) message size changed while being copied"},
    {-112, "unknown error code"},
    {-199, "unknown error code"},
    {-200, "(ipc/rcv) unknown error"},
    {-208, "(ipc/rcv) port receiver changed or port became enabled"},
    {-209, "unknown error code"},
    {-299, "unknown error code"},
    {-300, "(ipc/mig) client type check failure"},
    {-308, "(ipc/mig) server died"},
    {-309, "(ipc/mig) unknown trailer format"},
    {-310, "unknown error code"},
    {-399, "unknown error code"},
    {0x0c008000, "(ipc/mig) type check failure in message interface"},
    {1000, "(server/netname) name is not yours"},
    {1003, "(server/netname) host not found"},
    {1004, "unknown error code"},
    {1099, "unknown error code"},
    {1600, "unknown error code"},
    {1601, "(server/env_mgr) variable not found"},
    {1607, "(server/env_mgr) attempting to enter a null port "},
    {1699, "unknown error code"},
    {27600, "unknown error code"},
    {27601, "(server/execd) could not find file to run"},
    {27603, "(server/execd) fork failed"},
    {27699, "unknown error code"},
};

TEST(mach_error, old_numbers_are_read_as_their_replacements) { expect_texts(old_numbers); }

}  // namespace
