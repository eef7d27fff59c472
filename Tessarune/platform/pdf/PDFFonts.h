#pragma once

#include <QFont>
#include <QString>

/// The faces of a PDF. Sizes are points. A QGuiApplication's thread.
namespace tessarune::PDFFonts {

/// One Chinese character has other shapes in each place: what the document is written in decides
/// for all of it. To be called before the first font is asked for.
void choosePlace(const QString& sample);

QFont text(double size);
/// All digits are equally wide.
QFont digits(double size);

} // namespace tessarune::PDFFonts
