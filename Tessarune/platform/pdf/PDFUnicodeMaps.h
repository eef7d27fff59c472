#pragma once

#include <QByteArray>
#include <QString>
#include <vector>

/// The mapping from glyphs to text in a PDF of QPdfWriter. Pure.
namespace tessarune::PDFUnicodeMaps {

/// The texts of glyphs 1, 2… of a font; an empty one is unknown.
using Map = std::vector<QString>;

/// The file with new maps, one for each of its fonts in order, appended as a new version of these
/// objects. Unchanged if the number of fonts differs.
QByteArray replaced(const QByteArray& pdf, const std::vector<Map>& maps);

} // namespace tessarune::PDFUnicodeMaps
