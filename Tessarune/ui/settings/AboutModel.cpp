#include "Tessarune/ui/settings/AboutModel.h"

#include "TessaruneCore/text/Localization.h"

#include <QFile>
#include <QStringList>

namespace tessarune {

namespace {

QString resource(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

/// The cells of a row of a Markdown table; empty for a separator row and for any other line.
QStringList cells(const QString& line) {
    if (!line.startsWith('|') || line.startsWith(QStringLiteral("|-")))
        return {};
    QStringList all = line.split('|');
    all.removeFirst();
    all.removeLast();
    for (QString& cell : all)
        cell = cell.trimmed().remove('`');
    return all;
}

} // namespace

QString AboutModel::version() const {
    return QString::fromStdString(localized("版本 %@", {TESSARUNE_VERSION}));
}

QString AboutModel::licence() const {
    return resource(QStringLiteral(":/settings/LICENSE"));
}

QVariantList AboutModel::parts() const {
    QVariantList all;
    QString section;
    QStringList columns;
    for (const QString& line : resource(QStringLiteral(":/settings/third-party.md")).split('\n')) {
        if (line.startsWith(QStringLiteral("## "))) {
            section = line.mid(3);
            columns.clear();
        }
        const QStringList row = cells(line);
        if (row.isEmpty())
            continue;
        if (columns.isEmpty()) {
            columns = row;
            continue;
        }
        const auto cell = [&](const char* column) {
            return row.value(static_cast<int>(columns.indexOf(QString::fromUtf8(column))));
        };
        all << QVariantMap{{"name", row.first()},
                           {"use", cell("Used for")},
                           {"licence", cell("Licence")},
                           {"section", section}};
        section.clear();
    }
    return all;
}

QVariantMap AboutModel::texts() const {
    const auto shown = [](std::string_view key) { return QString::fromStdString(localized(key)); };
    return {{"what", shown("Linux 桌面上的实时字幕：在本机识别和翻译，不上传任何内容。")},
            {"licence", shown("许可证")}};
}

} // namespace tessarune
