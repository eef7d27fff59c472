#pragma once

#include <QFont>
#include <QString>

/// The fonts of a PDF. Sizes are in points. Only on a QGuiApplication's thread.
namespace tessarune::PDFFonts {

/// Chinese characters have different shapes in different regions. Chooses one region for the whole
/// document by the language of `sample`. Call before the first font is requested.
void chooseRegion(const QString& sample);

QFont text(double size);
/// A font whose digits are equally wide.
QFont digits(double size);

} // namespace tessarune::PDFFonts
