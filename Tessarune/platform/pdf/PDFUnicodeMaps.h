#pragma once

#include <QByteArray>
#include <QString>
#include <vector>

/// The mapping from glyphs to text in a PDF of QPdfWriter. Pure functions.
namespace tessarune::PDFUnicodeMaps {

/// The texts of the glyphs 1, 2… of a font; empty if unknown.
using Map = std::vector<QString>;

/// Returns the file with `maps` in place of its own: one for each font, in the order in which the
/// fonts were first used. Returns the file unchanged if it has another number of fonts, or if
/// QPdfWriter has laid it out differently than expected.
QByteArray replaced(const QByteArray& pdf, const std::vector<Map>& maps);

} // namespace tessarune::PDFUnicodeMaps
