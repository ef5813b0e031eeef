// SPDX-License-Identifier: Apache-2.0
#include "conformance/storage_promises.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>

#include "halvora/platform/time.h"

namespace halvora::conformance {

namespace {

constexpr std::size_t kLimit = 1U << 20;

std::string listed(const std::optional<std::vector<std::string>>& names) {
  if (!names) return "no list";
  std::string text;
  for (const std::string& name : *names) text += (text.empty() ? "" : ", ") + name;
  return text;
}

void checkReplacing(Files& files, const std::string& folder, Promises& promises) {
  const std::string path = folder + "/whole";
  // Longer first: what is left of it would show.
  const std::string first(100'000, 'x');
  const std::string second("short\0and not a text", 20);
  promises.expect(files.replace(path, first) && files.read(path, kLimit) == first,
                  "what was written is read back");
  promises.expect(files.replace(path, second) && files.read(path, kLimit) == second,
                  "a file is replaced whole, and nothing of the old one is left");
  promises.expect(files.replaceLastingly(path, first) && files.read(path, kLimit) == first,
                  "a file that is replaced lastingly is read back");
  promises.expect(files.replace(path, "") && files.read(path, kLimit) == "",
                  "an empty file is a file");
  promises.expect(files.list(folder) == std::vector<std::string>{"whole"},
                  "nothing but the file is left beside it", listed(files.list(folder)));
  promises.expect(
      !files.replace(folder + "/missing/file", "x") && !files.attributes(folder + "/missing"),
      "writing into a folder that is not there fails and makes none");
}

void checkReading(Files& files, const std::string& folder, Promises& promises) {
  const std::string path = folder + "/read";
  files.replace(path, "four");
  promises.expect(files.read(path, 4) == "four", "a file of exactly the limit is read");
  promises.expect(!files.read(path, 3), "a file larger than the limit is not read");
  promises.expect(!files.read(folder + "/none", kLimit), "a missing file is not read");
  promises.expect(!files.read(folder, kLimit), "a folder is not read");
  const std::optional<FileAttributes> attributes = files.attributes(path);
  promises.expect(attributes && !attributes->isFolder && attributes->size == 4,
                  "a file has its size, and is no folder");
  const std::optional<FileAttributes> ofFolder = files.attributes(folder);
  promises.expect(ofFolder && ofFolder->isFolder, "a folder is one");
  promises.expect(!files.attributes(folder + "/none"), "what is not there has no attributes");
}

void checkFolders(Files& files, const std::string& folder, Promises& promises) {
  const std::string inner = folder + "/a/b";
  promises.expect(files.makeFolder(inner) && files.makeFolder(inner),
                  "a folder is made with those above it, and is there when it was there before");
  for (const char* name : {"10", "9", "x", "B", "1"}) files.replace(inner + "/" + name, name);
  const std::vector<std::string> order{"1", "9", "10", "B", "x"};
  promises.expect(files.list(inner) == order,
                  "names that are numbers come first, by value, then the others by code point",
                  listed(files.list(inner)));
  promises.expect(!files.list(folder + "/none"), "a missing folder has no list");
  promises.expect(files.move(inner + "/9", inner + "/10") && files.read(inner + "/10", 9) == "9" &&
                      !files.attributes(inner + "/9"),
                  "a file is moved into the place of another");
  promises.expect(!files.move(inner + "/none", inner + "/x") && files.read(inner + "/x", 9) == "x",
                  "moving what is not there fails and changes nothing");
  files.removeFolder(folder + "/a");
  promises.expect(!files.attributes(folder + "/a"), "a folder is removed with all that is in it");
}

}  // namespace

std::vector<BrokenPromise> checkFiles(const std::function<std::unique_ptr<Files>()>& make,
                                      const std::string& folder) {
  Promises promises("Files");
  const std::unique_ptr<Files> files = make();
  checkReplacing(*files, folder, promises);
  checkReading(*files, folder, promises);
  checkFolders(*files, folder, promises);
  return std::move(promises).broken();
}

std::vector<BrokenPromise> checkUserDefaults(
    const std::function<std::unique_ptr<UserDefaults>()>& open) {
  Promises promises("UserDefaults");
  const std::array<DefaultsMember, 7> all{{
      {"truth", true},
      {"whole", std::int64_t{-9'007'199'254'740'993}},
      {"real", 0.1},
      {"text", std::string("ünï \"q\" \\ \n")},
      {"date", Date{1767268800.5}},
      {"list", DefaultsArray{std::int64_t{1}, std::string("two"), DefaultsArray{}}},
      {"object", DefaultsDictionary{{"a.b", std::int64_t{3}}, {"", false}}},
  }};
  std::unique_ptr<UserDefaults> defaults = open();
  promises.expect(defaults->find("text") == nullptr, "a key that is not set has no value");
  for (const DefaultsMember& one : all) {
    defaults->set(one.key, one.value);
    const DefaultsValue* found = defaults->find(one.key);
    promises.expect(found != nullptr && *found == one.value, "a read sees the last write at once",
                    one.key);
  }
  defaults->set("text", std::string("other"));
  const DefaultsValue* text = defaults->find("text");
  promises.expect(text != nullptr && *text == DefaultsValue(std::string("other")),
                  "a write takes the place of what was there");
  defaults->set("text", all[3].value);
  defaults->set("gone", true);
  defaults->remove("gone");
  defaults->remove("never");
  promises.expect(defaults->find("gone") == nullptr, "a removed key has no value");
  defaults->synchronize();
  defaults.reset();
  defaults = open();
  for (const DefaultsMember& one : all) {
    const DefaultsValue* found = defaults->find(one.key);
    promises.expect(found != nullptr && *found == one.value,
                    "values last beyond the end of the application, each of its kind", one.key);
  }
  promises.expect(defaults->find("gone") == nullptr, "a removed key stays removed");
  return std::move(promises).broken();
}

namespace {

void checkWhatIsKnownOfResources(Promises& promises, const BundleUnderTest& its) {
  const Bundle& bundle = *its.bundle;
  const auto known = bundle.attributes(its.path);
  promises.expect(known && !known->isFolder && known->size == its.bytes.size(),
                  "a resource's attributes say how large it is", its.path);
  promises.expect(bundle.attributes(its.path) == known, "of what does not change they stay");
  promises.expect(!bundle.attributes("no such/resource"), "nothing is known of a missing resource");
  promises.expect(!bundle.list("no such"), "a missing folder has no list");
  const std::size_t slash = its.path.rfind('/');
  if (slash == std::string::npos) return;
  const std::string folder = its.path.substr(0, slash);
  const auto above = bundle.attributes(folder);
  promises.expect(above && above->isFolder, "a folder of resources is one", folder);
  const auto names = bundle.list(folder).value_or(std::vector<std::string>());
  promises.expect(std::ranges::find(names, its.path.substr(slash + 1)) != names.end(),
                  "a folder's list has what lies in it", its.path);
  promises.expect(!bundle.readResource(folder, kLimit), "a folder is no resource", folder);
}

}  // namespace

std::vector<BrokenPromise> checkBundle(const std::function<BundleUnderTest()>& make) {
  Promises promises("Bundle");
  const BundleUnderTest its = make();
  const Bundle& bundle = *its.bundle;
  promises.expect(!bundle.identifier().empty(), "a bundle has an identifier");
  promises.expect(bundle.readResource(its.path, its.bytes.size()) == its.bytes,
                  "a resource of exactly the limit is read whole", its.path);
  promises.expect(!bundle.readResource(its.path, its.bytes.size() - 1),
                  "a resource larger than the limit is not read", its.path);
  promises.expect(!bundle.readResource("no such/resource", kLimit), "a missing resource is none");
  checkWhatIsKnownOfResources(promises, its);
  promises.expect(bundle.localizedString("no such key") == "no such key",
                  "a key without a text is its own text", bundle.localizedString("no such key"));
  return std::move(promises).broken();
}

}  // namespace halvora::conformance
