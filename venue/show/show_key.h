// SPDX-License-Identifier: Apache-2.0
// A show's key out of its file, and what a crew signs with it. Neither the key nor any part of it
// is ever in a message. Main thread.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <variant>

#include "halvora/platform/message_codes.h"
#include "venue/base/outside.h"

namespace halvora {

/// The key, or what to end with: the path is a key itself, or the file cannot be read, is readable
/// by its group or by everybody, or does not hold 32 hexadecimal digits (white space around them is
/// ignored) and nothing else.
std::variant<ShowKey, CommandResult> readShowKey(const std::string& path);

/// The codes of the key in a file; likewise, or this build has no cipher.
std::variant<std::unique_ptr<MessageCode>, CommandResult> readShowCode(const std::string& path,
                                                                       const MessageCodes* codes);

/// The minute that a tag is for, in whole minutes since 1970; or why the text is none.
std::variant<std::uint32_t, CommandResult> readEpoch(const std::string& text);

}  // namespace halvora
