#pragma once

#include <QByteArray>
#include <QString>
#include <vector>

/// The mapping from glyphs to text in a PDF of QPdfWriter. Pure functions.
namespace tessarune::PDFUnicodeMaps {

/// The texts of the glyphs 1, 2… of a font; empty if unknown.
using Map = std::vector<QString>;

/// Returns the file with new maps, one for each of its fonts in order, appended as new versions of
/// its map objects. Returns it unchanged if the number of fonts differs.
QByteArray replaced(const QByteArray& pdf, const std::vector<Map>& maps);

} // namespace tessarune::PDFUnicodeMaps
