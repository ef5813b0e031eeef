// SPDX-License-Identifier: Apache-2.0
// The journal is a text of lines "reserved N", of which the last whole one counts: a line that a
// power cut has torn was never reserved, because nothing of its block had been on the air.
#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <optional>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "venue/base/input_text.h"
#include "venue/live/sequence_numbers.h"
#include "venue/live/waiting_journal.h"

namespace halvora {

namespace {

constexpr std::string_view kWord = "reserved ";
/// More than its last two lines.
constexpr std::size_t kTail = 256;

class JournalFile {
 public:
  explicit JournalFile(int descriptor) : descriptor_(descriptor) {}
  ~JournalFile() { ::close(descriptor_); }
  JournalFile(const JournalFile&) = delete;
  JournalFile& operator=(const JournalFile&) = delete;

  bool isFile() const {
    struct stat file = {};
    return fstat(descriptor_, &file) == 0 && S_ISREG(file.st_mode);
  }
  bool lock() const { return flock(descriptor_, LOCK_EX | LOCK_NB) == 0; }

  /// The number that was reserved last, 0 in an empty file; none where it is no journal. Cuts off
  /// a torn line.
  std::optional<std::uint16_t> last() const {
    struct stat file = {};
    if (fstat(descriptor_, &file) != 0) return std::nullopt;
    std::array<char, kTail> bytes{};
    const off_t from = std::max<off_t>(0, file.st_size - static_cast<off_t>(kTail));
    const ssize_t count = pread(descriptor_, bytes.data(), bytes.size(), from);
    if (count < 0) return std::nullopt;
    const std::string_view tail(bytes.data(), static_cast<std::size_t>(count));
    const std::size_t end = tail.rfind('\n');
    if (end == std::string_view::npos) {
      // The first line of all was torn, or it is another file.
      const std::string_view known = kWord.substr(0, std::min(tail.size(), kWord.size()));
      if (!tail.starts_with(known) || ftruncate(descriptor_, 0) != 0) return std::nullopt;
      return std::uint16_t{0};
    }
    const std::size_t before = end == 0 ? std::string_view::npos : tail.rfind('\n', end - 1);
    const std::size_t begin = before == std::string_view::npos ? 0 : before + 1;
    const std::string_view line = tail.substr(begin, end - begin);
    if (!line.starts_with(kWord)) return std::nullopt;
    const auto number = decimal(line.substr(kWord.size()), 0xFFFF);
    if (!number || ftruncate(descriptor_, from + static_cast<off_t>(end) + 1) != 0) {
      return std::nullopt;
    }
    return static_cast<std::uint16_t>(*number);
  }

  /// A line that could not be written whole is taken back: the next one must not grow onto it.
  bool keep(std::uint16_t number) const {
    const std::string line = std::string(kWord) + std::to_string(number) + "\n";
    struct stat before = {};
    if (fstat(descriptor_, &before) != 0) return false;
    ssize_t count = -1;
    do {
      count = ::write(descriptor_, line.data(), line.size());
    } while (count < 0 && errno == EINTR);
    if (count == static_cast<ssize_t>(line.size())) return fdatasync(descriptor_) == 0;
    if (count > 0) static_cast<void>(!ftruncate(descriptor_, before.st_size));
    return false;
  }

 private:
  int descriptor_;
};

// A file that was made is there after a power cut only when its folder says so.
bool keepEntry(const std::string& path) {
  const std::string folder = std::filesystem::path(path).parent_path().string();
  const int descriptor = ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) return false;
  const bool isKept = fsync(descriptor) == 0;
  ::close(descriptor);
  return isKept;
}

CommandResult cannotBeWritten(const std::string& path) {
  return unusable(path + ": the journal cannot be written: " + std::strerror(errno));
}

CommandResult noJournal(const std::string& path) {
  return unusable(path + ": not a journal of sequence numbers; give another file, or a new one");
}

std::variant<std::shared_ptr<JournalFile>, CommandResult> openFile(const std::string& path,
                                                                   int flags) {
  const int descriptor = ::open(path.c_str(), O_RDWR | O_APPEND | O_CLOEXEC | O_NONBLOCK | flags,
                                S_IRUSR | S_IWUSR | S_IRGRP | S_IROTH);
  if (descriptor < 0) return cannotBeWritten(path);
  auto file = std::make_shared<JournalFile>(descriptor);
  if (!file->isFile()) return unusable(path + ": not a file; a journal must be one");
  return file;
}

std::unique_ptr<ReservedNumbers> numbersAbove(std::uint16_t last, std::shared_ptr<JournalFile> file,
                                              std::unique_ptr<SerialQueue> queue) {
  return std::make_unique<ReservedNumbers>(
      last, [file = std::move(file)](std::uint16_t number) { return file->keep(number); },
      std::move(queue));
}

// The descriptor stays that of the file which the player has, whatever is put in its place.
class OthersJournal final : public WaitingJournal {
 public:
  OthersJournal(std::string path, std::shared_ptr<JournalFile> file)
      : path_(std::move(path)), file_(std::move(file)) {}

  bool isFree() override { return file_->lock(); }

  std::variant<std::unique_ptr<SequenceNumbers>, CommandResult> take(
      std::unique_ptr<SerialQueue> queue) override {
    const auto last = file_->last();
    if (!last) return noJournal(path_);
    auto numbers = numbersAbove(*last, file_, std::move(queue));
    static_cast<void>(numbers->begin());
    return std::unique_ptr<SequenceNumbers>(std::move(numbers));
  }

 private:
  const std::string path_;
  std::shared_ptr<JournalFile> file_;
};

}  // namespace

std::variant<std::unique_ptr<SequenceNumbers>, CommandResult> openSequenceJournal(
    const std::string& path, std::uint16_t first, std::unique_ptr<SerialQueue> queue) {
  auto opened = openFile(path, O_CREAT);
  if (auto* refusal = std::get_if<CommandResult>(&opened)) return std::move(*refusal);
  const auto file = std::get<std::shared_ptr<JournalFile>>(std::move(opened));
  if (!file->lock()) {
    return failed(path + ": another player has this journal; end it first, or give another file");
  }
  const auto last = file->last();
  if (!last) return noJournal(path);
  if (!keepEntry(path)) return cannotBeWritten(path);
  const auto below = static_cast<std::uint16_t>(std::max<int>(first, 1) - 1);
  auto numbers = numbersAbove(std::max(*last, below), file, std::move(queue));
  if (!numbers->begin()) return cannotBeWritten(path);
  return std::unique_ptr<SequenceNumbers>(std::move(numbers));
}

std::variant<std::unique_ptr<WaitingJournal>, CommandResult> WaitingJournal::open(
    const std::string& path) {
  auto opened = openFile(path, 0);
  if (auto* refusal = std::get_if<CommandResult>(&opened)) return std::move(*refusal);
  auto file = std::get<std::shared_ptr<JournalFile>>(std::move(opened));
  if (file->lock()) {
    return unusable(path + ": no player has this journal; start the one to stand by for first");
  }
  return std::unique_ptr<WaitingJournal>(std::make_unique<OthersJournal>(path, std::move(file)));
}

}  // namespace halvora
