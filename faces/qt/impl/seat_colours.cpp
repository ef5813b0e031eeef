// SPDX-License-Identifier: Apache-2.0
#include "faces/qt/impl/seat_colours.h"

#include <cstddef>
#include <iterator>

namespace halvora {

struct SeatColourRow {
  QRgb ink;
  QRgb ground;
  QRgb hairline;
  QRgb raised;
  QRgb field;
  QRgb alert;
  QRgb shade;
  QRgb sign;
  QRgb selectedInk;
};

namespace {

constexpr QRgb kClear = qRgba(0, 0, 0, 0);
constexpr QRgb kBlack = qRgb(0, 0, 0);
constexpr QRgb kWhite = qRgb(255, 255, 255);
/// So dark that nothing behind a sheet competes with it.
constexpr QRgb kDeepShade = qRgba(0, 0, 0, 217);

constexpr SeatColourRow kRows[] = {
    {kWhite, kClear, qRgba(255, 255, 255, 41), qRgba(255, 255, 255, 23), qRgba(255, 255, 255, 112),
     qRgb(28, 28, 31), qRgba(0, 0, 0, 153), qRgba(0, 0, 0, 190), kWhite},
    {kWhite, kBlack, kWhite, kBlack, kWhite, kBlack, kDeepShade, kBlack, kBlack},
    {kBlack, kWhite, kBlack, kWhite, kBlack, kWhite, kDeepShade, kWhite, kWhite},
};
static_assert(std::size(kRows) == static_cast<std::size_t>(SeatPalette::blackOnWhite) + 1);

}  // namespace

SeatPalette paletteFor(bool highContrast, ColourScheme scheme) {
  if (!highContrast) return SeatPalette::usual;
  return scheme == ColourScheme::light ? SeatPalette::blackOnWhite : SeatPalette::whiteOnBlack;
}

const SeatColourRow& SeatColours::row() const { return kRows[static_cast<std::size_t>(palette_)]; }

QColor SeatColours::ink() const { return QColor::fromRgba(row().ink); }
QColor SeatColours::ground() const { return QColor::fromRgba(row().ground); }
QColor SeatColours::hairline() const { return QColor::fromRgba(row().hairline); }
QColor SeatColours::raised() const { return QColor::fromRgba(row().raised); }
QColor SeatColours::field() const { return QColor::fromRgba(row().field); }
QColor SeatColours::alert() const { return QColor::fromRgba(row().alert); }
QColor SeatColours::shade() const { return QColor::fromRgba(row().shade); }
QColor SeatColours::sign() const { return QColor::fromRgba(row().sign); }
QColor SeatColours::selectedInk() const { return QColor::fromRgba(row().selectedInk); }

}  // namespace halvora
