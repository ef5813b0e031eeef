// SPDX-License-Identifier: Apache-2.0
#include "tests/adapters/linux/services/fake_service.h"

#include <sstream>
#include <utility>

#include <gtest/gtest.h>

namespace halvora {

namespace {

void appendBasic(sd_bus_message* message, char type, std::ostream& text) {
  union {
    const char* letters;
    std::uint32_t number;
    std::int32_t integer;
    int flag;
    double real;
  } value;
  ASSERT_GT(sd_bus_message_read_basic(message, type, &value), 0);
  switch (type) {
    case 's':
    case 'o':
      text << value.letters;
      break;
    case 'u':
      text << value.number;
      break;
    case 'i':
      text << value.integer;
      break;
    case 'b':
      text << (value.flag != 0 ? "true" : "false");
      break;
    case 'd':
      text << value.real;
      break;
    default:
      ADD_FAILURE() << "no text for arguments of type " << type;
  }
}

void appendAll(sd_bus_message* message, std::ostream& text) {
  const char* separator = "";
  char type = 0;
  const char* contents = nullptr;
  while (sd_bus_message_peek_type(message, &type, &contents) > 0) {
    text << std::exchange(separator, ", ");
    if (contents == nullptr) {
      appendBasic(message, type, text);
      continue;
    }
    ASSERT_GT(sd_bus_message_enter_container(message, type, contents), 0);
    text << '[';
    appendAll(message, text);
    text << ']';
    ASSERT_GE(sd_bus_message_exit_container(message), 0);
  }
}

}  // namespace

FakeService::FakeService(RunLoop& loop, Descriptors& descriptors, std::string address,
                         std::string name)
    : connection_(loop, descriptors), address_(std::move(address)), name_(std::move(name)) {}

void FakeService::appear() {
  connection_.open(address_, [] {});
  sd_bus_slot* slot = nullptr;
  ASSERT_GE(sd_bus_add_filter(connection_.bus(), &slot, handleCall, this), 0);
  filter_.reset(slot);
  ASSERT_GE(sd_bus_request_name(connection_.bus(), name_.c_str(), 0), 0);
  connection_.sent();
}

void FakeService::die() {
  kept_.clear();
  connection_.close();
}

void FakeService::announce(const char* path, const char* interface, const char* member,
                           const std::function<void(sd_bus_message*)>& fill) {
  sd_bus_message* message = nullptr;
  ASSERT_GE(sd_bus_message_new_signal(connection_.bus(), &message, path, interface, member), 0);
  const BusMessage owned(message);
  fill(message);
  ASSERT_GE(sd_bus_send(connection_.bus(), message, nullptr), 0);
  connection_.sent();
}

void FakeService::answerKept() {
  for (const BusMessage& call : std::exchange(kept_, {})) answer(call.get());
  connection_.sent();
}

int FakeService::handleCall(sd_bus_message* message, void* self, sd_bus_error*) {
  if (sd_bus_message_is_method_call(message, nullptr, nullptr) <= 0) return 0;
  auto& fake = *static_cast<FakeService*>(self);
  fake.calls.push_back(std::string(sd_bus_message_get_member(message)) + "(" +
                       argumentsOf(message) + ")");
  fake.caller = sd_bus_message_get_sender(message);
  sd_bus_message_rewind(message, 1);
  if (fake.isHanging) {
    fake.kept_.emplace_back(sd_bus_message_ref(message));
  } else {
    fake.answer(message);
  }
  return 1;
}

void FakeService::answer(sd_bus_message* call) {
  const std::string method =
      std::string(sd_bus_message_get_interface(call)) + "." + sd_bus_message_get_member(call);
  const auto known = answers.find(method);
  const auto& reply = known != answers.end() ? known->second : refusal(SD_BUS_ERROR_UNKNOWN_METHOD);
  EXPECT_GE(reply(call), 0) << method;
}

int agree(sd_bus_message* call) { return sd_bus_reply_method_return(call, nullptr); }

FakeService::Answer refusal(const char* name) {
  return [name](sd_bus_message* call) {
    return sd_bus_reply_method_errorf(call, name, "as the test wants it");
  };
}

std::string argumentsOf(sd_bus_message* message) {
  std::ostringstream text;
  appendAll(message, text);
  return text.str();
}

void FakeService::signal(const char* path, const char* interface, const char* member, bool value) {
  ASSERT_GE(sd_bus_emit_signal(connection_.bus(), path, interface, member, "b", value ? 1 : 0), 0);
  connection_.sent();
}

}  // namespace halvora
