// The built-in default phone answers the button statistics request.

#include "sim_test_support.h"

namespace {

long long service_id(io_service_t service) {
  long long id = -1;
  CFTypeRef number = IORegistryEntryCreateCFProperty(service, CFSTR("service_id"), nullptr, 0);
  if (number != nullptr) {
    CFNumberGetValue(static_cast<CFNumberRef>(number), kCFNumberLongLongType, &id);
    CFRelease(number);
  }
  return id;
}

TEST(default_phone, statistics_of_zol_button_by_name_and_by_id) {
  tmxsim::load_default_description();
  const io_service_t named = lookup(interface_named("ZOL_zol-button"));
  ASSERT_NE(named, 0u);
  const long long id = service_id(named);
  const io_service_t numbered = lookup(interface_with_id(static_cast<int>(id)));
  ASSERT_NE(numbered, 0u);
  EXPECT_EQ(service_id(numbered), id);

  io_connect_t connection = 0;
  ASSERT_EQ(IOServiceOpen(numbered, mach_task_self(), 0, &connection), KERN_SUCCESS);
  std::vector<std::uint8_t> record(4096, 0);
  std::size_t size = record.size();
  EXPECT_EQ(command(connection, 215, record.data(), &size), KERN_SUCCESS);
  EXPECT_GE(size, 282u);  // a whole statistics record

  IOServiceClose(connection);
  IOObjectRelease(numbered);
  IOObjectRelease(named);
  EXPECT_EQ(audit_text(), all_clear);
}

}  // namespace
