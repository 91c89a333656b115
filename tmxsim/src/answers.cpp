#include <IOKit/IOReturn.h>

#include <algorithm>
#include <cstring>

#include "description.h"

namespace tmxsim {

const answer& answer_list::take() {
  static const answer drained;
  if (!sequence) return answers.front();
  if (next == answers.size()) return drained;
  return answers[next++];
}

answer_list* find_answers(std::vector<answer_list>& lists, std::uint64_t key) {
  for (answer_list& list : lists)
    if (list.key == key) return &list;
  return nullptr;
}

call_answer answer_call(answer_list* list, void* buffer, std::size_t capacity) {
  if (list == nullptr) return {static_cast<std::uint32_t>(kIOReturnUnsupported), 0};
  const answer& reply = list->take();
  if (reply.result != 0) return {reply.result, 0};
  const std::size_t size = std::min(reply.reply.size(), capacity);
  if (size > 0) std::memcpy(buffer, reply.reply.data(), size);
  return {0, size};
}

void rewind_answers(description& phone) {
  for (service_description& service : phone.services) {
    for (answer_list& list : service.commands) list.next = 0;
    for (answer_list& list : service.methods) list.next = 0;
  }
  for (hid_description& device : phone.hid_devices)
    for (answer_list& list : device.reports) list.next = 0;
}

}  // namespace tmxsim
