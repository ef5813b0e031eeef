// SPDX-License-Identifier: Apache-2.0
#include "faces/qt/show_key_file.h"

#include <QFile>
#include <algorithm>
#include <array>
#include <string_view>

namespace halvora {

namespace {

/// More than any key with white space around it that somebody means.
constexpr std::size_t kLongestFile = 256;
constexpr auto kOthers = QFileDevice::ReadGroup | QFileDevice::ReadOther;

/// A file's first bytes, wiped when they go.
struct KeyText {
  KeyText() = default;
  ~KeyText() {
    // Written through a volatile, because nobody reads it any more and a compiler would leave it.
    for (volatile char& byte : bytes) byte = 0;
  }
  KeyText(const KeyText&) = delete;
  KeyText& operator=(const KeyText&) = delete;

  std::array<char, kLongestFile> bytes{};
};

}  // namespace

std::variant<ShowKey, QString> showKeyIn(const QUrl& file) {
  const QString path = file.scheme().isEmpty() ? file.path() : file.toLocalFile();
  if (path.isEmpty()) {
    return file.toString() + QStringLiteral(": a show key is read from a local file");
  }
  QFile opened(path);
  // Without a buffer, which nobody would wipe.
  if (!opened.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
    return path + QStringLiteral(": ") + opened.errorString();
  }
  // Of what is open, whatever has its name by now.
  if ((opened.permissions() & kOthers) != 0) {
    return path + QStringLiteral(": others may read this show key; allow only its owner, 0600");
  }
  KeyText text;
  const qint64 size = opened.read(text.bytes.data(), kLongestFile);
  if (size < 0) return path + QStringLiteral(": ") + opened.errorString();
  if (const auto key = ShowKey::ofText({text.bytes.data(), static_cast<std::size_t>(size)})) {
    return *key;
  }
  return path + QStringLiteral(": a show key is 32 hexadecimal digits and nothing else");
}

}  // namespace halvora
