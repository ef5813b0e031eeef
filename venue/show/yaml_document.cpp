// SPDX-License-Identifier: Apache-2.0
#include "venue/show/yaml_document.h"

#include <algorithm>
#include <map>
#include <new>
#include <utility>

#include <yaml.h>

namespace halvora {

namespace {

std::size_t lineOf(const yaml_mark_t& mark) { return mark.line + 1; }

std::string textOf(const yaml_char_t* text) {
  return text == nullptr ? std::string() : std::string(reinterpret_cast<const char*>(text));
}

// One event of the parser, which owns memory.
class Event {
 public:
  Event(yaml_parser_t& parser, std::string_view text) {
    if (yaml_parser_parse(&parser, &event_) != 0) return;
    if (parser.error == YAML_MEMORY_ERROR) throw std::bad_alloc();
    std::size_t line = lineOf(parser.problem_mark);
    if (parser.error == YAML_READER_ERROR) {
      // What is no text has no mark, only an offset.
      const std::string_view before = text.substr(0, parser.problem_offset);
      line = 1 + static_cast<std::size_t>(std::ranges::count(before, '\n'));
    }
    throw YamlFault{line, "not YAML: " + std::string(parser.problem != nullptr ? parser.problem
                                                                               : "it breaks off")};
  }
  ~Event() { yaml_event_delete(&event_); }
  Event(const Event&) = delete;
  Event& operator=(const Event&) = delete;

  yaml_event_type_t type() const { return event_.type; }
  std::size_t line() const { return lineOf(event_.start_mark); }
  const yaml_event_t* operator->() const { return &event_; }

 private:
  yaml_event_t event_{};
};

// What some editors put before a text, and YAML allows there.
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// Faults are thrown within this file: they come out of every depth, and never leave it.
class Parse {
 public:
  explicit Parse(std::string_view text)
      : text_(text), bytes_(text.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0) {
    if (yaml_parser_initialize(&parser_) == 0) throw std::bad_alloc();
    yaml_parser_set_encoding(&parser_, YAML_UTF8_ENCODING);
    const std::string_view shown = text.substr(bytes_);
    yaml_parser_set_input_string(&parser_, reinterpret_cast<const unsigned char*>(shown.data()),
                                 shown.size());
  }
  ~Parse() { yaml_parser_delete(&parser_); }
  Parse(const Parse&) = delete;
  Parse& operator=(const Parse&) = delete;

  YamlValue run() {
    YamlValue root;
    for (;;) {
      const Event event(parser_, text_);
      if (event.type() == YAML_STREAM_END_EVENT) break;
      if (event.type() == YAML_DOCUMENT_START_EVENT && root) {
        throw YamlFault{event.line(), "a second document begins here; one file holds one show"};
      }
      if (event.type() == YAML_STREAM_START_EVENT || event.type() == YAML_DOCUMENT_START_EVENT ||
          event.type() == YAML_DOCUMENT_END_EVENT) {
        continue;
      }
      YamlSpan span;
      root = valueOf(event, 0, span);
    }
    if (root) return root;
    YamlNode nothing;
    nothing.line = 1;
    return std::make_shared<const YamlNode>(std::move(nothing));
  }

 private:
  // The library counts letters.
  std::size_t byteAt(const yaml_mark_t& mark) {
    for (; letters_ < mark.index && bytes_ < text_.size(); ++letters_) {
      do {
        ++bytes_;
      } while (bytes_ < text_.size() &&
               (static_cast<unsigned char>(text_[bytes_]) & 0xC0U) == 0x80U);
    }
    return bytes_;
  }

  YamlValue valueOf(const Event& event, int depth, YamlSpan& span) {
    span.begin = byteAt(event->start_mark);
    // Of what is not by indentation, whose end is that of its last part.
    span.end = byteAt(event->end_mark);
    if (event.type() == YAML_ALIAS_EVENT) return aliasOf(event);
    YamlNode node;
    node.line = event.line();
    std::string anchor;
    if (event.type() == YAML_SCALAR_EVENT) {
      anchor = textOf(event->data.scalar.anchor);
      node.text.assign(reinterpret_cast<const char*>(event->data.scalar.value),
                       event->data.scalar.length);
    } else {
      if (depth == kDeepestYaml) throw YamlFault{event.line(), "nested too deeply"};
      const bool isList = event.type() == YAML_SEQUENCE_START_EVENT;
      anchor =
          textOf(isList ? event->data.sequence_start.anchor : event->data.mapping_start.anchor);
      node.isFlow = isList ? event->data.sequence_start.style == YAML_FLOW_SEQUENCE_STYLE
                           : event->data.mapping_start.style == YAML_FLOW_MAPPING_STYLE;
      if (isList) {
        fillList(node, depth + 1, span);
      } else {
        fillMap(node, depth + 1, span);
      }
    }
    YamlValue value = std::make_shared<const YamlNode>(std::move(node));
    if (!anchor.empty()) anchors_[anchor] = value;
    return value;
  }

  // An anchor is known when what it names is whole, so nothing can hold itself.
  YamlValue aliasOf(const Event& event) const {
    const std::string name = textOf(event->data.alias.anchor);
    const auto found = anchors_.find(name);
    if (found == anchors_.end()) {
      throw YamlFault{event.line(), "*" + name + " has no &" + name + " above it"};
    }
    return found->second;
  }

  void fillList(YamlNode& node, int depth, YamlSpan& span) {
    node.kind = YamlNode::Kind::list;
    for (;;) {
      const Event event(parser_, text_);
      if (event.type() == YAML_SEQUENCE_END_EVENT) {
        if (node.isFlow) span.end = byteAt(event->end_mark);
        return;
      }
      YamlSpan own;
      node.items.push_back(valueOf(event, depth, own));
      node.itemSpans.push_back(own);
      span.end = own.end;
    }
  }

  void fillMap(YamlNode& node, int depth, YamlSpan& span) {
    node.kind = YamlNode::Kind::map;
    std::map<std::string, std::size_t, std::less<>> lines;
    for (;;) {
      YamlMember member;
      {
        const Event event(parser_, text_);
        if (event.type() == YAML_MAPPING_END_EVENT) {
          if (node.isFlow) span.end = byteAt(event->end_mark);
          return;
        }
        const YamlValue key = valueOf(event, depth, member.keySpan);
        member.line = event.line();
        if (key->kind != YamlNode::Kind::scalar) {
          throw YamlFault{member.line, "a key must be a text"};
        }
        member.key = key->text;
      }
      const auto [known, isNew] = lines.emplace(member.key, member.line);
      if (!isNew) {
        throw YamlFault{member.line, "\"" + member.key + "\" is here a second time (line " +
                                         std::to_string(known->second) + "); keep one of them"};
      }
      const Event event(parser_, text_);
      member.value = valueOf(event, depth, member.span);
      span.end = member.span.end;
      node.members.push_back(std::move(member));
    }
  }

  std::string_view text_;
  yaml_parser_t parser_{};
  /// One place of the text, counted both ways; it only goes forward.
  std::size_t letters_ = 0;
  std::size_t bytes_ = 0;
  std::map<std::string, YamlValue, std::less<>> anchors_;
};

}  // namespace

std::variant<YamlValue, YamlFault> parseYaml(std::string_view text) {
  try {
    return Parse(text).run();
  } catch (YamlFault& fault) {
    return std::move(fault);
  }
}

}  // namespace halvora
