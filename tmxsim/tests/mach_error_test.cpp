// The texts of kernel results, as the phone returns them.

#include <gtest/gtest.h>
#include <mach/mach_error.h>

#include <algorithm>
#include <cstdint>

namespace {

struct expected_text {
  std::int64_t value;  // as written: hexadecimal, or a signed old number
  const char* text;    // null: the phone returns a null pointer
  bool last = false;   // the last text of its table: the code after it has none
};

const char* text_of(std::int64_t value) {
  return mach_error_string(static_cast<mach_error_t>(static_cast<std::uint32_t>(value)));
}

constexpr expected_text texts[] = {
    // Values from every kind of system; those of iokit/common are among its texts below.
    {0x00000000, "(os/kern) successful"},
    {0x00000001, "(os/kern) invalid address"},
    {0x00000003, "(os/kern) no space available"},
    {0x00000004, "(os/kern) invalid argument"},
    {0x10000003, "(ipc/send) invalid destination port"},
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
    {0x1c000001, "(ipc/send) send in progress", true},
    {0x20004001, nullptr},
    {0xdc000001, "(libkern/common) general/unspecified error", true},
    {0xe0000000, "unknown error code"},
    {0xe0024000, "(iokit/?) unknown subsystem error"},
    {0xe3ff8000, "(iokit/?) unknown subsystem error"},
    // The last text of every table; the code after it has none.
    {0x00000038, "(os/kern) result not found", true},
    {0x0000c045, "(os/unix) quota on available disk space exceeded", true},
    {0x08000003, "(server/netname) host not found", true},
    {0x08004007, "(server/env_mgr) attempting to enter a null port ", true},
    {0x08008003, "(server/execd) fork failed", true},
    {0x0800c002, "(server/netmemory) resource shortage", true},
    {0x08014005, "(server/task_master) invalid action", true},
    {0x08018011, "(server/ns) entry not reserved", true},
    {0x0801c005, "(server/io) operation rejected under current I/O strategy", true},
    {0x08020008, "(server/auth) not secondary", true},
    {0x08024017, "(server/us) internal error", true},
    {0x08028011, "(server/sunrpc) unknown protocol", true},
    {0x0802c005, "(server/object system) bad ipc message format", true},
    {0x08030005, "(server/loader) memory region overlap", true},
    {0x08034006, "(server/exception) breakpoint exception", true},
    {0x0803801d, "(server/unix-signal) user-defined signal 2", true},
    {0x0803c00c, "(server/xkernel) bad addr", true},
    {0x0c00000b, "(ipc/send) message size changed while being copied", true},
    {0x0c004008, "(ipc/rcv) port receiver changed or port became enabled", true},
    {0x0c008007, "(ipc/mig) user specified array not large enough for return info", true},
    {0x10000016, "(ipc/send) destination does not accept OOL ports", true},
    {0x10004010, "(ipc/rcv) DIPC transport error", true},
    {0x10008009, "(ipc/mig) unknown trailer format", true},
    {0x1c004007, "(vm/reclaim) invalid ring", true},
    {0xdc00400b, "(libkern/metaclass) no kext for metaclass", true},
    {0xdc00801f, "(libkern/kext) loading of both Auxiliary and System KCs failed", true},
    // Unknown subsystems, and codes without texts.
    {0x03ffffff, "(operating system/?) unknown subsystem error"},
    {0x04004000, "(user space/?) unknown subsystem error"},
    {0x08040000, "(server/?) unknown subsystem error"},
    {0x0c00c000, "(ipc/?) unknown subsystem error"},
    {0x1000c000, "(ipc/?) unknown subsystem error"},
    {0x1c008000, "(vm/?) unknown subsystem error"},
    {0xdc00c000, "(libkern/?) unknown subsystem error"},
    {0x00004000, "unknown error code"},
    {0x0000bfff, "unknown error code"},
    {0x0000c000, "unknown error code"},
    {0x08004000, "unknown error code"},
    {0x08008000, "unknown error code"},
    {0x08010000, "unknown error code"},
    {0xdc000000, "unknown error code"},
    {0xdc004000, "unknown error code"},
    {0xdc008000, "unknown error code"},
    // Old numbers are read as their replacements.
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
    // Every text of iokit/common; its other codes have none.
    {0xe0000001, "(iokit/common) invalid - should never be seen"},
    {0xe00002bc, "(iokit/common) general error"},
    {0xe00002bd, "(iokit/common) can't allocate memory"},
    {0xe00002be, "(iokit/common) resource shortage"},
    {0xe00002bf, "(iokit/common) error during IPC"},
    {0xe00002c0, "(iokit/common) no such device"},
    {0xe00002c1, "(iokit/common) privilege violation"},
    {0xe00002c2, "(iokit/common) invalid argument"},
    {0xe00002c3, "(iokit/common) device read locked"},
    {0xe00002c4, "(iokit/common) device write locked"},
    {0xe00002c5, "(iokit/common) exclusive access and device already open"},
    {0xe00002c6, "(iokit/common) sent/received messages had different msg_id"},
    {0xe00002c7, "(iokit/common) unsupported function"},
    {0xe00002c8, "(iokit/common) misc. VM failure"},
    {0xe00002c9, "(iokit/common) internal error"},
    {0xe00002ca, "(iokit/common) General I/O error"},
    {0xe00002cb, "(iokit/common) ???"},
    {0xe00002cc, "(iokit/common) can't acquire lock"},
    {0xe00002cd, "(iokit/common) device not open"},
    {0xe00002ce, "(iokit/common) read not supported"},
    {0xe00002cf, "(iokit/common) write not supported"},
    {0xe00002d0, "(iokit/common) alignment error"},
    {0xe00002d1, "(iokit/common) Media Error"},
    {0xe00002d2, "(iokit/common) device(s) still open"},
    {0xe00002d3, "(iokit/common) rld failure"},
    {0xe00002d4, "(iokit/common) DMA failure"},
    {0xe00002d5, "(iokit/common) Device Busy"},
    {0xe00002d6, "(iokit/common) I/O Timeout"},
    {0xe00002d7, "(iokit/common) device offline"},
    {0xe00002d8, "(iokit/common) not ready"},
    {0xe00002d9, "(iokit/common) device not attached"},
    {0xe00002da, "(iokit/common) no DMA channels left"},
    {0xe00002db, "(iokit/common) no space for data"},
    {0xe00002dc, "(iokit/common) ???"},
    {0xe00002dd, "(iokit/common) port already exists"},
    {0xe00002de, "(iokit/common) can't wire down physical memory"},
    {0xe00002df, "(iokit/common) no interrupt attached"},
    {0xe00002e0, "(iokit/common) no DMA frames enqueued"},
    {0xe00002e1, "(iokit/common) oversized msg received on interrupt port"},
    {0xe00002e2, "(iokit/common) not permitted"},
    {0xe00002e3, "(iokit/common) no power to device"},
    {0xe00002e4, "(iokit/common) media not present"},
    {0xe00002e5, "(iokit/common) media not formatted"},
    {0xe00002e6, "(iokit/common) no such mode"},
    {0xe00002e7, "(iokit/common) data underrun"},
    {0xe00002e8, "(iokit/common) data overrun"},
    {0xe00002e9, "(iokit/common) the device is not working properly!"},
    {0xe00002ea, "(iokit/common) a completion routine is required"},
    {0xe00002eb, "(iokit/common) operation aborted"},
    {0xe00002ec, "(iokit/common) bus bandwidth would be exceeded"},
    {0xe00002ed, "(iokit/common) device not responding"},
    {0xe00002ee, "(iokit/common) isochronous I/O request for distant past!"},
    {0xe00002ef, "(iokit/common) isochronous I/O request for distant future"},
    {0xe00002f0, "(iokit/common) data was not found", true},
};

TEST(mach_error, texts) {
  for (const expected_text& row : texts) {
    EXPECT_STREQ(text_of(row.value), row.text) << std::hex << row.value;
    if (!row.last) continue;
    EXPECT_STREQ(text_of(row.value + 1), "unknown error code") << std::hex << row.value + 1;
  }
}

// Every code of iokit/common, and of the subsystems past the phone's nine.
TEST(mach_error, every_iokit_code) {
  for (std::uint32_t code = 0; code <= 0x3fff; ++code) {
    const auto known = std::ranges::find(texts, 0xe0000000 | code, &expected_text::value);
    const char* expected = known != std::end(texts) ? known->text : "unknown error code";
    ASSERT_STREQ(text_of(0xe0000000 | code), expected) << std::hex << "code 0x" << code;
  }
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
  for (std::int32_t value = -1; value >= -1000; --value)
    ASSERT_EQ(text_of(value) == nullptr, value > -100 || value < -399) << value;
  EXPECT_EQ(text_of(-67108864), nullptr);
  EXPECT_EQ(text_of(INT32_MIN), nullptr);
}

}  // namespace
