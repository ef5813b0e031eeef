// SPDX-License-Identifier: Apache-2.0
#include "venue/plan/flaw_list.h"

#include <cmath>

#include "seats/seat_texts.h"
#include "text/rows.h"
#include "venue/plan/placed_seats.h"

namespace halvora {

namespace {

struct FlawRow {
  Flaw flaw;
  const char* kind;
  const char* one;
  const char* many;
};

constexpr std::array<FlawRow, kFlaws> kRows = {{
    {Flaw::unusedPart, "unusedPart", "part of the document stands where nobody looks",
     "parts of the document stand where nobody looks"},
    {Flaw::repeatedMember, "repeatedMember",
     "member has the name of an earlier one and does not count",
     "members have the name of an earlier one and do not count"},
    {Flaw::sectionSkipped, "sectionSkipped", "entry is no section and is passed over",
     "entries are no sections and are passed over"},
    {Flaw::rowSkipped, "rowSkipped", "entry is no row and is passed over",
     "entries are no rows and are passed over"},
    {Flaw::seatSkipped, "seatSkipped", "entry is no seat and is passed over",
     "entries are no seats and are passed over"},
    {Flaw::listMissing, "listMissing",
     "list of rows or seats is something else and counts as empty",
     "lists of rows or seats are something else and count as empty"},
    {Flaw::cutShort, "cutShort", "seat has fewer than two coordinates and is passed over",
     "seats have fewer than two coordinates and are passed over"},
    {Flaw::rowWithoutSeats, "rowWithoutSeats", "row has no seats and is left out",
     "rows have no seats and are left out"},
    {Flaw::sectionWithoutRows, "sectionWithoutRows",
     "section has no rows with seats and is left out",
     "sections have no rows with seats and are left out"},
    {Flaw::nameUnusable, "nameUnusable", "name cannot be used as it is written",
     "names cannot be used as they are written"},
    {Flaw::nameMissing, "nameMissing", "entry has no name where others have one, and gets a number",
     "entries have no name where others have one, and get a number"},
    {Flaw::positionChanged, "positionChanged", "coordinate counts as another than is written",
     "coordinates count as others than are written"},
    {Flaw::positionUnusable, "positionUnusable", "coordinate cannot be used and is passed over",
     "coordinates cannot be used and are passed over"},
    {Flaw::positionMissing, "positionMissing",
     "coordinate is missing where other seats have one: the seat is placed by its number",
     "coordinates are missing where other seats have them: the seats are placed by their numbers"},
}};

static_assert(areInOrder(kRows, &FlawRow::flaw));

}  // namespace

void FlawList::takeFrom(const FlawList& other, Flaw flaw) {
  Finding& own = findings_[static_cast<std::size_t>(flaw)];
  const Finding& others = other.findings_[static_cast<std::size_t>(flaw)];
  own.count += others.count;
  for (const std::string& example : others.examples) {
    if (own.wantsExamples()) own.examples.push_back(example);
  }
}

std::vector<Finding> FlawList::finish() const {
  std::vector<Finding> found;
  for (const FlawRow& row : kRows) {
    Finding finding = findings_[static_cast<std::size_t>(row.flaw)];
    if (finding.count == 0) continue;
    finding.kind = row.kind;
    finding.text = counted(finding.count, row.one, row.many);
    found.push_back(std::move(finding));
  }
  return found;
}

std::string shownText(const JsonScalar& value) {
  constexpr std::size_t kLongest = 40;
  std::string text(value.text.substr(0, kLongest));
  // Not within a character.
  while (text.size() < value.text.size() && !text.empty() &&
         (static_cast<unsigned char>(value.text[text.size()]) & 0xC0) == 0x80) {
    text.pop_back();
  }
  if (text.size() < value.text.size()) text += "...";
  return value.isText() ? "\"" + text + "\"" : text;
}

bool saysWhatItMeans(const JsonScalar& position) {
  constexpr double kWhole = 9007199254740992.0;
  switch (position.kind) {
    case JsonScalar::Kind::integer:
      return true;
    case JsonScalar::Kind::real:
      return std::fabs(position.real) <= kWhole && std::trunc(position.real) == position.real;
    case JsonScalar::Kind::text: {
      std::string_view text = trimmed(position.text);
      if (text.starts_with('-') || text.starts_with('+')) text.remove_prefix(1);
      constexpr std::size_t kMostDigits = 18;
      return !text.empty() && text.size() <= kMostDigits &&
             text.find_first_not_of("0123456789") == std::string_view::npos;
    }
    default:
      return false;
  }
}

std::int64_t countedAs(const JsonScalar& position) {
  return position.isText() ? leadingInteger(position.text) : position.wholeNumber();
}

}  // namespace halvora
