#pragma once

#include <QFont>
#include <QString>

/// The faces of a PDF. Sizes are points. A QGuiApplication's thread.
namespace tessarune::PDFFonts {

/// A Chinese character has different shapes in different regions: the document's language decides
/// for all of it. Call before the first font is requested.
void choosePlace(const QString& sample);

QFont text(double size);
/// All digits are equally wide.
QFont digits(double size);

} // namespace tessarune::PDFFonts
