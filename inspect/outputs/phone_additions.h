#pragma once

// What a harvest cannot show, added to a phone written from a capture: the
// registry's properties (service ids among them), services, commands and
// reports that the harvest does not ask for.

#include <string>
#include <string_view>

#include "inspect/outputs/phone_writer.h"

namespace inspect {

struct addition_fault {
  std::string where;  // "byte N" or the item, such as "services[2].name"
  std::string message;
};

// Adds the items of the description `additions` (JSON text) to `phone`.
// Services and their children are matched by name, HID devices by place;
// where both have an item, the phone's own stands. On a fault `phone` may
// hold part of the additions.
bool add_to_phone(phone_description& phone, std::string_view additions, addition_fault& fault);

}  // namespace inspect
