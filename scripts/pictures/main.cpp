// caption-gallery FOLDER [LOCALE [NAME]]: draws the caption window, the history window and the page
// of the first start in every state, and the settings window pane by pane, into PNG files.
// caption-gallery --sheet FOLDER: puts the pictures of all folders in FOLDER on one sheet.

#include "Tessarune/shell/StringTables.h"
#include "Tessarune/ui/captions/CaptionFonts.h"
#include "Tessarune/ui/captions/MenuWindow.h"
#include "scripts/pictures/CaptionPictures.h"
#include "scripts/pictures/HistoryPictures.h"
#include "tests/ui/StagedSettings.h"
#include "tests/ui/StagedWelcome.h"

#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QPainter>
#include <QPalette>
#include <QQuickPaintedItem>
#include <QTemporaryFile>
#include <cmath>
#include <functional>
#include <iostream>
#include <utility>

namespace {

using namespace tessarune;

/// A state of the settings window.
struct SettingsPicture {
    const char* name;
    const char* pane;
    std::function<void(StagedSettings&)> stage = {};
};

const SettingsPicture settingsPictures[] = {
    {"recognition", "recognition"},
    {"translation", "translation"},
    {"captions", "captions"},
    {"recording", "recording"},
    {"shortcuts", "shortcuts"},
    {"advanced", "advanced"},
    {"about", "about"},
    {"search", "", [](auto& s) { s.window->model().setQuery("colo"); }},
    {"problems", "recording",
     [](auto& s) {
         s.problem = "settings.json: line 3, column 1";
         s.store.set("recordLosslessAudio", std::string("maybe"));
         s.changedElsewhere();
     }},
};

/// The window and the menus that are open over it.
QImage imageOf(QQuickWindow& window) {
    QRect all = window.geometry();
    QList<QQuickWindow*> shown{&window};
    for (auto* const menu : window.findChildren<MenuWindow*>()) {
        if (menu->isVisible()) {
            shown << menu;
            all |= menu->geometry();
        }
    }
    QImage image(all.size() * window.devicePixelRatio(), QImage::Format_ARGB32_Premultiplied);
    image.fill(QColor(0x5f, 0x68, 0x70));
    QPainter painter(&image);
    for (QQuickWindow* const each : std::as_const(shown))
        painter.drawImage((each->position() - all.topLeft()) * window.devicePixelRatio(),
                          each->grabWindow());
    return image;
}

bool save(QQuickWindow& window, const QString& file) {
    const bool saved = imageOf(window).save(file);
    if (!saved)
        std::cerr << "cannot write " << file.toStdString() << "\n";
    return saved;
}

/// Draws the settings window. Also sets the colours of the windows that are drawn afterwards.
bool drawSettings(const QString& folder, bool isDark) {
    QPalette palette = QGuiApplication::palette();
    palette.setColor(QPalette::Window, isDark ? QColor(0x1b1b1e) : QColor(0xf5f5f7));
    palette.setColor(QPalette::WindowText, isDark ? Qt::white : Qt::black);
    QGuiApplication::setPalette(palette);
    for (const SettingsPicture& picture : settingsPictures) {
        StagedSettings settings;
        settings.open(picture.pane);
        if (picture.stage)
            picture.stage(settings);
        runFor(400);
        const QString name =
            QStringLiteral("/settings-%1-%2.png")
                .arg(QString::fromUtf8(picture.name), QString::fromUtf8(isDark ? "dark" : "light"));
        if (!save(settings.window->window(), folder + name))
            return false;
    }
    return true;
}

/// Draws the page of the first start in three states: the questions, a download, and the captions
/// of the sample speech.
bool drawWelcome(const QString& folder, const QString& suffix) {
    StagedWelcome page;
    page.open();
    talk(page.captions);
    page.captions.publish();
    const auto saved = [&](const char* what) {
        runFor(400);
        return save(page.window->window(), folder + "/welcome-" + what + "-" + suffix + ".png");
    };
    bool isDrawn = saved("ask");
    page.press("begin");
    isDrawn = saved("download") && isDrawn;
    page.models.succeeds.resume(true);
    return saved("sample") && isDrawn;
}

/// A backdrop with bright, dark and intermediate areas, like a film.
QImage scene(QSize size) {
    QImage image(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            const double hill = 0.55 + 0.12 * std::sin(x / 37.0) + 0.05 * std::sin(x / 9.0 + 1);
            const double height = static_cast<double>(y) / size.height();
            const int grain = (x * 7919 + y * 104729) % 23;
            image.setPixelColor(
                x, y,
                height < hill ? QColor::fromHsv(205, 90, 245 - int(height * 90) - grain)
                              : QColor::fromHsv(100, 120, 110 - int(height * 60) + 2 * grain));
        }
    }
    return image;
}

/// What is behind the caption window: a film, or the white page of a document.
class Backdrop : public QQuickPaintedItem {
  public:
    Backdrop(QQuickWindow& window, bool isWhite)
        : QQuickPaintedItem(window.contentItem()), image_(scene({480, 240})) {
        if (isWhite)
            image_.fill(Qt::white);
        setSize(window.size());
        setZ(-1);
    }
    void paint(QPainter* painter) override { painter->drawImage(boundingRect(), image_); }

  private:
    QImage image_;
};

bool draw(const CaptionPicture& picture, SubtitleLayoutMode layout, const QString& file) {
    QFont font = QGuiApplication::font();
    const QFont usual = font;
    if (QByteArray(picture.name).startsWith("large-desktop"))
        font.setPointSizeF(2 * font.pointSizeF());
    QGuiApplication::setFont(font);
    StagedCaptions captions;
    captions.settings.smoothPaceMS = 60;
    captions.settings.subtitleLayoutMode = layout;
    picture.stage(captions);
    captions.publish();
    captions.open();
    setHovered(captions, true);
    if (picture.act)
        picture.act(captions);
    const Backdrop backdrop(captions.window->window(), QByteArray(picture.name).endsWith("white"));
    runFor(1600);
    const bool isSaved = save(captions.window->window(), file);
    QGuiApplication::setFont(usual);
    return isSaved;
}

/// Draws all pictures. A non-empty `name` selects one picture of the caption window.
int drawAll(const QString& folder, const QString& name) {
    QDir().mkpath(folder);
    for (const CaptionPicture& picture : pictures) {
        if (!name.isEmpty() && name != picture.name)
            continue;
        for (const auto& [layout, suffix] : {std::pair(SubtitleLayoutMode::bilingualCompare, ""),
                                             std::pair(SubtitleLayoutMode::lyrics, "-lyrics")}) {
            if (layout == SubtitleLayoutMode::lyrics && !picture.hasLayouts)
                continue;
            const QString file = folder + "/" + picture.name + suffix + ".png";
            if (!draw(picture, layout, file))
                return 1;
        }
    }
    if (!name.isEmpty())
        return 0;
    const bool isDrawn = drawSettings(folder, true) && drawHistory(folder, "dark", save) &&
                         drawWelcome(folder, "dark") && drawSettings(folder, false) &&
                         drawHistory(folder, "light", save) && drawWelcome(folder, "light");
    return isDrawn ? 0 : 1;
}

/// Draws a column per folder and a row per picture.
int drawSheet(const QString& folder) {
    const QDir all(folder);
    const QStringList columns = all.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
    if (columns.isEmpty())
        return 1;
    const QStringList names =
        QDir(all.filePath(columns.front())).entryList({"*.png"}, QDir::Files, QDir::Name);
    constexpr QSize cell(480, 240);
    constexpr int label = 20;
    QImage sheet(cell.width() * static_cast<int>(columns.size()),
                 (cell.height() + label) * static_cast<int>(names.size()), QImage::Format_RGB32);
    sheet.fill(Qt::white);
    QPainter painter(&sheet);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    for (int column = 0; column < columns.size(); ++column) {
        for (int line = 0; line < names.size(); ++line) {
            const QPoint corner(column * cell.width(), line * (cell.height() + label));
            painter.drawText(corner + QPoint(6, label - 6),
                             columns[column] + "  " + QFileInfo(names[line]).baseName());
            const QRect place(corner + QPoint(0, label), cell);
            const QImage picture(all.filePath(columns[column] + "/" + names[line]));
            const QSize size = picture.size().scaled(cell - QSize(12, 12), Qt::KeepAspectRatio);
            painter.drawImage(QRect(place.topLeft() + QPoint(6, 6), size), picture);
        }
    }
    return sheet.save(all.filePath("sheet.png")) ? 0 : 1;
}

/// The offscreen platform, with a screen that is large enough for every window at twice the scale.
QByteArray platform() {
    static QTemporaryFile screens;
    screens.open();
    screens.write(R"({"screens": [{"name": "gallery", "width": 3840, "height": 2400}]})");
    screens.flush();
    return "offscreen:configfile=" + screens.fileName().toLocal8Bit();
}

} // namespace

int main(int argc, char** argv) {
    const bool isSheet = argc > 2 && QByteArray(argv[1]) == "--sheet";
    const QString folder = QString::fromLocal8Bit(argc > 1 ? argv[isSheet ? 2 : 1] : "gallery");
    qputenv("QT_QUICK_BACKEND", "software");
    offscreenApplication(platform());
    if (isSheet)
        return drawSheet(folder);
    const char* const locale = argc > 2 ? argv[2] : "zh_CN";
    setLocalizationTable(StringTables::forLocale(locale));
    nameInterfaceFaces(locale);
    return drawAll(folder, QString::fromLocal8Bit(argc > 3 ? argv[3] : ""));
}
