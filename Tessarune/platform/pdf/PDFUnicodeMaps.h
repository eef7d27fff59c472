#pragma once

#include <QByteArray>
#include <QString>
#include <vector>

/// What a PDF of QPdfWriter says about the text that its glyphs stand for. Pure.
namespace tessarune::PDFUnicodeMaps {

/// The texts of glyph 1, 2… of a font; an empty one is not known.
using Map = std::vector<QString>;

/// The file with other maps, one for each of its fonts in their order. They are added at its end,
/// as a new version of these objects. Unchanged if the file has not so many fonts.
QByteArray replaced(const QByteArray& pdf, const std::vector<Map>& maps);

} // namespace tessarune::PDFUnicodeMaps
