// SPDX-License-Identifier: Apache-2.0
#include "venue/show/cue_file.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "venue/show/yaml_document.h"

namespace halvora {

/// Bytes that give way to a text.
struct TextEdit {
  YamlSpan span;
  std::string with;
};

namespace {

constexpr std::string_view kBlanks = " \t";

bool isBlank(std::string_view text) {
  return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

std::size_t lineBegin(std::string_view text, std::size_t at) {
  const std::size_t before = at == 0 ? std::string_view::npos : text.rfind('\n', at - 1);
  return before == std::string_view::npos ? 0 : before + 1;
}

/// The line's end, which belongs to it.
std::size_t lineEnd(std::string_view text, std::size_t at) {
  const std::size_t end = text.find('\n', at);
  return end == std::string_view::npos ? text.size() : end + 1;
}

const char* newLineOf(std::string_view text) {
  return text.find("\r\n") == std::string_view::npos ? "\n" : "\r\n";
}

// A comment begins at a # before which nothing or a blank stands, and not in quotes.
std::vector<std::string> commentsIn(std::string_view text) {
  std::vector<std::string> comments;
  char quote = 0;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char letter = text[at];
    if (quote != 0) {
      if (letter == '\\' && quote == '"') ++at;
      if (letter == quote) quote = 0;
    } else if (letter == '"' || letter == '\'') {
      const std::string_view opening = " \t\n[{,";
      if (at == 0 || opening.find(text[at - 1]) != std::string_view::npos) quote = letter;
    } else if (letter == '#' && (at == 0 || isBlank(text.substr(at - 1, 1)))) {
      const std::size_t end = text.find_first_of("\r\n", at);
      comments.emplace_back(text.substr(at, end == std::string_view::npos ? end : end - at));
      if (end == std::string_view::npos) break;
      at = end;
    }
  }
  return comments;
}

const YamlMember* memberOf(const YamlNode& node, std::string_view key) {
  const auto found = std::ranges::find(node.members, key, &YamlMember::key);
  return found == node.members.end() ? nullptr : &*found;
}

/// The list of cues of a file that was read before.
YamlValue cuesOf(std::string_view text) {
  const auto document = parseYaml(text);
  const auto* root = std::get_if<YamlValue>(&document);
  const YamlMember* cues = root == nullptr ? nullptr : memberOf(**root, "cues");
  return cues == nullptr ? nullptr : cues->value;
}

// Below one another, the part goes with its line where nothing else is on it.
YamlSpan wholeLine(std::string_view text, YamlSpan span) {
  const std::size_t begin = lineBegin(text, span.begin);
  const std::size_t end = lineEnd(text, span.end);
  if (isBlank(text.substr(begin, span.begin - begin)) &&
      isBlank(text.substr(span.end, end - span.end))) {
    return {begin, end};
  }
  return span;
}

TextEdit withoutMember(std::string_view text, const YamlNode& node, std::size_t at) {
  const YamlMember& member = node.members[at];
  YamlSpan span{member.keySpan.begin, member.span.end};
  const bool hasNext = at + 1 < node.members.size();
  const std::size_t next = hasNext ? node.members[at + 1].keySpan.begin : span.end;
  if (node.isFlow) {
    if (hasNext) span.end = next;
    if (!hasNext && at > 0) span.begin = node.members[at - 1].span.end;
    return {span, {}};
  }
  const YamlSpan whole = wholeLine(text, span);
  // What stands behind the dash of its cue leaves the dash to the next key.
  if (whole.begin == span.begin && hasNext && isBlank(text.substr(span.end, next - span.end))) {
    return {{span.begin, next}, {}};
  }
  return {whole, {}};
}

// Before the look, which every cue has.
std::optional<TextEdit> withMember(std::string_view text, const YamlNode& node,
                                   std::string_view key, std::string_view value) {
  const YamlMember* const look = memberOf(node, "look");
  if (look == nullptr) return std::nullopt;
  const std::size_t at = look->keySpan.begin;
  const std::string pair = std::string(key) + ": " + std::string(value);
  if (node.isFlow) return TextEdit{{at, at}, pair + ", "};
  const std::size_t begin = lineBegin(text, at);
  if (text.substr(begin, at - begin).find_first_not_of(" -") != std::string_view::npos) {
    return std::nullopt;
  }
  return TextEdit{{at, at}, pair + newLineOf(text) + std::string(at - begin, ' ')};
}

std::optional<TextEdit> memberEdit(std::string_view text, const YamlNode& cue, std::string_view key,
                                   std::string_view value) {
  const auto found = std::ranges::find(cue.members, key, &YamlMember::key);
  if (found == cue.members.end()) {
    return value.empty() ? TextEdit{} : withMember(text, cue, key, value);
  }
  if (value.empty()) {
    return withoutMember(text, cue, static_cast<std::size_t>(found - cue.members.begin()));
  }
  return TextEdit{found->span, std::string(value)};
}

/// Where the dash of a cue stands; none where it does not stand before it.
std::optional<std::size_t> dashOf(std::string_view text, std::size_t item) {
  const std::size_t before =
      item == 0 ? std::string_view::npos : text.find_last_not_of(kBlanks, item - 1);
  if (before == std::string_view::npos || text[before] != '-') return std::nullopt;
  return isBlank(text.substr(lineBegin(text, before), before - lineBegin(text, before)))
             ? std::optional(before)
             : std::nullopt;
}

std::optional<TextEdit> cueEdit(std::string_view text, const YamlNode& list, std::size_t after,
                                const std::string& name, const std::string& look) {
  const YamlSpan item = list.itemSpans[after];
  if (list.isFlow) {
    return TextEdit{{item.end, item.end}, ", {name: " + name + ", look: " + look + "}"};
  }
  const auto dash = dashOf(text, item.begin);
  if (!dash) return std::nullopt;
  const std::string newLine = newLineOf(text);
  const std::string indent(*dash - lineBegin(text, *dash), ' ');
  const std::size_t at = lineEnd(text, item.end);
  const bool isOpen = at == text.size() && (text.empty() || text.back() != '\n');
  return TextEdit{{at, at},
                  (isOpen ? newLine : "") + indent + "- name: " + name + newLine + indent +
                      "  look: " + look + newLine};
}

std::optional<TextEdit> cueRemoval(std::string_view text, const YamlNode& list, std::size_t at) {
  YamlSpan span = list.itemSpans[at];
  const bool hasNext = at + 1 < list.items.size();
  if (list.isFlow) {
    if (hasNext) span.end = list.itemSpans[at + 1].begin;
    if (!hasNext && at > 0) span.begin = list.itemSpans[at - 1].end;
    return TextEdit{span, {}};
  }
  const auto dash = dashOf(text, span.begin);
  if (!dash) return std::nullopt;
  return TextEdit{{lineBegin(text, *dash), lineEnd(text, span.end)}, {}};
}

bool isSameCue(const Cue& one, const Cue& other) {
  return one.name == other.name && one.at == other.at && one.hold == other.hold &&
         one.fade == other.fade && one.look == other.look;
}

bool areSame(const CueList& one, std::size_t from, const CueList& other, std::size_t otherFrom,
             std::size_t count) {
  for (std::size_t at = 0; at < count; ++at) {
    if (!isSameCue(one.cues[from + at], other.cues[otherFrom + at])) return false;
  }
  return true;
}

// All cues before and behind what was changed are what they were: so many of the old ones and so
// many of the new ones are in between.
bool isAsMeant(const CueList& before, const CueList& after, std::size_t at, std::size_t old,
               std::size_t fresh) {
  const std::size_t behind = before.cues.size() - at - old;
  return after.sender == before.sender && after.repeat == before.repeat &&
         after.cues.size() == at + fresh + behind && areSame(before, 0, after, 0, at) &&
         areSame(before, at + old, after, at + fresh, behind);
}

std::string edited(const std::string& text, const TextEdit& edit) {
  std::string after = text;
  return after.replace(edit.span.begin, edit.span.end - edit.span.begin, edit.with);
}

std::vector<CueListFlaw> layoutFlaw(const Cue& cue) {
  return {
      {cue.line, "cue \"" + cue.name + "\"",
       "its lines are laid out in a way that cannot be changed here; edit the file, and open it "
       "again"}};
}

}  // namespace

/// So many cues from that one on give way to so many others.
struct CueFile::Change {
  std::optional<TextEdit> edit;
  std::size_t cue;
  std::size_t old;
  std::size_t fresh;
};

CueFile::Result CueFile::read(std::string text, const ShowNames& names) {
  auto parsed = parseCueList(text, names.palettes);
  if (auto* flaws = std::get_if<std::vector<CueListFlaw>>(&parsed)) return std::move(*flaws);
  auto& show = std::get<CueList>(parsed);
  if (auto flaws = flawsOfMaps(show, names.frames); !flaws.empty()) return flaws;
  return CueFile(std::move(text), std::move(show));
}

CueFile::Result CueFile::changed(const Change& change, const ShowNames& names) const {
  const Cue& now = show_.cues[std::min(change.cue, show_.cues.size() - 1)];
  if (!change.edit) return layoutFlaw(now);
  Result result = read(edited(text_, *change.edit), names);
  auto* const file = std::get_if<CueFile>(&result);
  if (file == nullptr) return result;
  if (!isAsMeant(show_, file->show_, change.cue, change.old, change.fresh)) return layoutFlaw(now);
  const YamlSpan span = change.edit->span;
  file->lostComments_ = lostComments_;
  for (std::string& comment :
       commentsIn(std::string_view(text_).substr(span.begin, span.end - span.begin))) {
    file->lostComments_.push_back(std::move(comment));
  }
  return result;
}

CueFile::Result CueFile::with(std::size_t cue, std::string_view key, std::string_view value,
                              const ShowNames& names) const {
  const YamlValue cues = cuesOf(text_);
  return changed({memberEdit(text_, *cues->items[cue], key, value), cue, 1, 1}, names);
}

CueFile::Result CueFile::withCueAfter(std::size_t cue, std::string_view name, const CueLook& look,
                                      const ShowNames& names) const {
  const std::string words = yamlLook(look, names.palettes);
  return changed({cueEdit(text_, *cuesOf(text_), cue, yamlText(name), words), cue + 1, 0, 1},
                 names);
}

CueFile::Result CueFile::withoutCue(std::size_t cue, const ShowNames& names) const {
  return changed({cueRemoval(text_, *cuesOf(text_), cue), cue, 1, 0}, names);
}

}  // namespace halvora
