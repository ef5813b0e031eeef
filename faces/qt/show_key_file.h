// SPDX-License-Identifier: Apache-2.0
// A show's key out of the file that a host names. Nothing of the key is ever in a message, and no
// copy of it is left. Main thread.
#pragma once

#include <QString>
#include <QUrl>
#include <variant>

#include "halvora/platform/message_codes.h"

namespace halvora {

/// The key; or why there is none, in a line for the host's developer: no local file, others than
/// its owner may read it, or it is not 32 hexadecimal digits.
std::variant<ShowKey, QString> showKeyIn(const QUrl& file);

}  // namespace halvora
