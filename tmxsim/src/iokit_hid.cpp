// IOKit HID: the devices of `hid_devices` and their feature reports.

#include <IOKit/hid/IOHIDDevice.h>

#include <algorithm>
#include <string>

#include "call_log.h"
#include "cf_describe.h"
#include "platform.h"

using tmxsim::cf_kind;
using tmxsim::cf_value;
using tmxsim::log_line;
using tmxsim::platform;

namespace {

constexpr CFIndex max_report_id = 255;

std::string device_name(platform& state, IOHIDDeviceRef device) {
  return tmxsim::cf_name(state.cf, device);
}

tmxsim::hid_description& described(platform& state, const cf_value& device) {
  return state.phone.model.hid_devices[device.hid_index];
}

}  // namespace

extern "C" {

CFTypeID IOHIDDeviceGetTypeID(void) {
  return tmxsim::answer_type_id("IOHIDDeviceGetTypeID", cf_kind::hid_device);
}

IOHIDDeviceRef IOHIDDeviceCreate(CFAllocatorRef, io_service_t service) {
  platform& state = tmxsim::the_platform();
  cf_value* device = nullptr;
  const tmxsim::handle_slot* slot = tmxsim::find_entry(state, service);
  if (slot != nullptr && slot->entry.hid &&
      state.phone.model.hid_devices[slot->entry.index].create) {
    device = &state.cf.create(cf_kind::hid_device, true);
    device->hid_index = slot->entry.index;
  }
  if (state.log.on())
    log_line(state.log, "IOHIDDeviceCreate").hex(service).returns().word(
        tmxsim::cf_name(state.cf, device));
  return reinterpret_cast<IOHIDDeviceRef>(device);
}

IOReturn IOHIDDeviceOpen(IOHIDDeviceRef device, IOOptionBits options) {
  platform& state = tmxsim::the_platform();
  IOReturn result = kIOReturnBadArgument;
  if (cf_value* value = tmxsim::find_live(state, device, cf_kind::hid_device)) {
    result = static_cast<IOReturn>(described(state, *value).open_result);
    if (result == kIOReturnSuccess) value->hid_open = true;
  }
  if (state.log.on())
    log_line(state.log, "IOHIDDeviceOpen")
        .word(device_name(state, device))
        .hex(options)
        .returns()
        .hex(static_cast<std::uint32_t>(result));
  return result;
}

// Closing a device that did not open is allowed: it answers "not open".
IOReturn IOHIDDeviceClose(IOHIDDeviceRef device, IOOptionBits options) {
  platform& state = tmxsim::the_platform();
  IOReturn result = kIOReturnBadArgument;
  if (cf_value* value = tmxsim::find_live(state, device, cf_kind::hid_device)) {
    result = value->hid_open ? kIOReturnSuccess : kIOReturnNotOpen;
    value->hid_open = false;
  }
  if (state.log.on())
    log_line(state.log, "IOHIDDeviceClose")
        .word(device_name(state, device))
        .hex(options)
        .returns()
        .hex(static_cast<std::uint32_t>(result));
  return result;
}

IOReturn IOHIDDeviceGetReport(IOHIDDeviceRef device, IOHIDReportType reportType,
                              CFIndex reportID, uint8_t* report, CFIndex* pReportLength) {
  platform& state = tmxsim::the_platform();
  const CFIndex capacity =
      report != nullptr && pReportLength != nullptr ? std::max<CFIndex>(*pReportLength, 0) : 0;
  IOReturn result = kIOReturnBadArgument;
  std::size_t delivered = 0;
  cf_value* value = tmxsim::find_live(state, device, cf_kind::hid_device);
  if (value != nullptr && pReportLength != nullptr) {
    if (!value->hid_open) {
      result = kIOReturnNotOpen;
    } else {
      tmxsim::answer_list* answers = nullptr;
      if (reportType == kIOHIDReportTypeFeature && reportID >= 0 && reportID <= max_report_id)
        answers = tmxsim::find_answers(described(state, *value).reports,
                                       static_cast<std::uint64_t>(reportID));
      const tmxsim::call_answer answer =
          tmxsim::answer_call(answers, report, static_cast<std::size_t>(capacity));
      result = static_cast<IOReturn>(answer.result);
      delivered = answer.delivered;
      if (result == kIOReturnSuccess) *pReportLength = static_cast<CFIndex>(delivered);
    }
  }
  if (state.log.on()) {
    log_line line(state.log, "IOHIDDeviceGetReport");
    line.word(device_name(state, device))
        .word("type=" + std::to_string(reportType))
        .hex(static_cast<std::uint64_t>(reportID))
        .word("capacity=" + std::to_string(capacity))
        .returns()
        .hex(static_cast<std::uint32_t>(result));
    if (result == kIOReturnSuccess) line.word("delivered=" + std::to_string(delivered));
  }
  return result;
}

}  // extern "C"
