// SPDX-License-Identifier: Apache-2.0
// A show file that is edited where it stands: a change touches the bytes of its value alone, so
// that comments and layout stay as their author has them. Each change gives another file, which was
// read again whole and says what was meant and nothing else, or the reasons why there is none.
// Values, any thread.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "venue/show/cue_list.h"
#include "venue/show/cue_schedule.h"
#include "venue/show/palette_names.h"

namespace halvora {

/// What the names and maps of a show are looked up in.
struct ShowNames {
  std::vector<NamedPalette> palettes;
  MapFrames frames;
};

class CueFile {
 public:
  /// The file, or all that is wrong with it.
  using Result = std::variant<CueFile, std::vector<CueListFlaw>>;

  static Result read(std::string text, const ShowNames& names);

  const std::string& text() const { return text_; }
  const CueList& show() const { return show_; }
  /// Comments that stood within what was changed, and are gone.
  const std::vector<std::string>& lostComments() const { return lostComments_; }
  /// They were said, and the file was written without them.
  void forgetLostComments() { lostComments_.clear(); }

  /// A key of that cue says something else, written as YAML; empty takes the key away.
  Result with(std::size_t cue, std::string_view key, std::string_view value,
              const ShowNames& names) const;
  /// One more cue, which waits for GO, below that one.
  Result withCueAfter(std::size_t cue, std::string_view name, const CueLook& look,
                      const ShowNames& names) const;
  Result withoutCue(std::size_t cue, const ShowNames& names) const;

 private:
  struct Change;

  CueFile(std::string text, CueList show) : text_(std::move(text)), show_(std::move(show)) {}
  Result changed(const Change& change, const ShowNames& names) const;

  std::string text_;
  CueList show_;
  std::vector<std::string> lostComments_;
};

/// A text as YAML, whatever it holds.
std::string yamlText(std::string_view text);
/// A look as YAML, in one line.
std::string yamlLook(const CueLook& look, const std::vector<NamedPalette>& palettes);

}  // namespace halvora
