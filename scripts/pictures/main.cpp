// caption-gallery FOLDER [LOCALE [NAME]]: draws the caption and the history window and the first
// page in every state, and the settings window pane by pane, into PNG files.
// caption-gallery --sheet FOLDER: puts the pictures of all folders in FOLDER on one sheet.

#include "Tessarune/shell/StringTables.h"
#include "Tessarune/ui/captions/CaptionFonts.h"
#include "Tessarune/ui/captions/MenuWindow.h"
#include "TessaruneCore/translation/TranslationSupport.h"
#include "scripts/pictures/HistoryPictures.h"
#include "tests/ui/StagedCaptions.h"
#include "tests/ui/StagedSettings.h"
#include "tests/ui/StagedWelcome.h"

#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QPainter>
#include <QPalette>
#include <QQuickItem>
#include <QQuickPaintedItem>
#include <QTemporaryFile>
#include <QTest>
#include <cmath>
#include <functional>
#include <iostream>
#include <utility>

namespace {

using namespace tessarune;
using Kind = SessionStatus::Kind;

/// A state of the caption window. A name that begins with "large-desktop" doubles the desktop's
/// font; a name that ends with "white" has a white backdrop.
struct Picture {
    const char* name;
    std::function<void(StagedCaptions&)> stage;    ///< before the window opens
    std::function<void(StagedCaptions&)> act = {}; ///< with the window open
    bool hasLayouts = true;                        ///< the picture depends on the layout
};

void talk(StagedCaptions& captions) {
    captions.enter(LiveSessionPhase::listening, Kind::none);
    captions.session.audioLevel = 0.5;
    captions.session.sessionDuration = 83.0;
    captions.settle("It was the best of times, it was the worst of times.",
                    "那是最美好的时代，那是最糟糕的时代。");
    captions.settle("It was the age of wisdom, it was the age of foolishness.",
                    "那是智慧的年代，那是愚昧的年代。");
    captions.settle(
        "It was the epoch of belief, it was the epoch of incredulity, and nobody in the "
        "whole of the city could have told you which of the two would win.",
        "那是信仰的时期，那是怀疑的时期，全城没有一个人能告诉你两者之中哪一个会取胜。");
    captions.settle("We had everything before us.", "我们面前应有尽有。");
    captions.speak("We had nothing before us, we were all going");
    captions.frame.ghostTranslationText = "我们面前一无所有，我们全都";
    captions.frame.ghostTranslationSourceText = captions.frame.livePartialRow->sourceText;
}

void wantEverything(StagedCaptions& captions) {
    captions.showAllButtons();
    captions.session.inputDevices = std::vector<AudioInputDevices::Device>{
        {"usb", "USB Microphone", true},
        {"long", "Sennheiser SC 165 USB Headset Analog Stereo (front left, front right)", false}};
}

void talkWithEverything(StagedCaptions& captions) {
    wantEverything(captions);
    talk(captions);
}

/// Sets whether the pointer is over the window, which then shows its toolbar.
void setHovered(StagedCaptions& captions, bool hovered) {
    captions.window->window().property("model").value<CaptionWindowModel*>()->setHovered(hovered);
}

void press(StagedCaptions& captions, Qt::MouseButton button, QPoint point) {
    QTest::mouseClick(&captions.window->window(), button, {}, point);
}

void pressInSmallWindow(StagedCaptions& captions, Qt::MouseButton button, QPoint point) {
    captions.window->window().resize(380, 180);
    runFor(100);
    press(captions, button, point);
}

const Picture pictures[] = {
    {"idle", [](auto&) {}, {}, false},
    {"checking", [](auto& c) { c.enter(LiveSessionPhase::loading, Kind::checking); }, {}, false},
    {"silent", [](auto& c) { c.enter(LiveSessionPhase::listening, Kind::silent); }, {}, false},
    {"waiting",
     [](auto& c) {
         c.soundName = std::string("radio.fifo");
         c.waiting = localized("Waiting for sound from %@.", {"radio.fifo"});
     },
     {},
     false},
    {"failed",
     [](auto& c) {
         c.session.presentedError = localized("麦克风设备不可用。");
         c.enter(LiveSessionPhase::failed, Kind::none);
         c.speak(*c.session.presentedError);
     },
     {},
     false},
    {"cleared",
     [](auto& c) {
         c.enter(LiveSessionPhase::listening, Kind::none);
         c.session.clearedSegmentIDs = std::unordered_set<UUID>{UUID::random()};
     },
     {},
     false},
    {"bilingual", talk},
    {"hidden-toolbar", talk, [](auto& c) { setHovered(c, false); }, false},
    {"bilingual-swapped",
     [](auto& c) {
         c.settings.swapCaptionOrder = true;
         talk(c);
     }},
    {"source-only",
     [](auto& c) {
         c.settings.translationBackend = "关闭";
         talk(c);
     },
     {},
     false},
    {"quiet",
     [](auto& c) {
         talk(c);
         c.session.audioLevel = 0;
     },
     [](auto&) { runFor(4500); }, false},
    {"behind",
     [](auto& c) {
         talk(c);
         c.secondsBehind = 14;
     }},
    {"stopped",
     [](auto& c) {
         talk(c);
         c.speak("");
         c.frame.ghostTranslationText.clear();
         c.enter(LiveSessionPhase::idle, Kind::idle);
     }},
    {"selected", talk,
     [](auto& c) {
         runFor(400);
         auto* const stage = c.window->window()
                                 .template findChild<QQuickItem*>("sourceList")
                                 ->parentItem()
                                 ->parentItem();
         QMetaObject::invokeMethod(stage, "selectAll");
     }},
    {"reading-back",
     [](auto& c) {
         for (int i = 0; i < 12; ++i)
             talk(c);
     },
     [](auto& c) {
         runFor(400);
         auto* const list = c.window->window()
                                .template findChild<QQuickItem*>("sourceList")
                                ->template findChild<QQuickItem*>("list");
         QMetaObject::invokeMethod(list, "flick", Q_ARG(double, 0), Q_ARG(double, 1500));
     }},
    {"large-type",
     [](auto& c) {
         c.settings.sourceFontSize = 44;
         c.settings.translationFontSize = 36;
         talk(c);
     }},
    {"narrow", talk, [](auto& c) { c.window->window().resize(400, 420); }},
    {"wide", talk, [](auto& c) { c.window->window().resize(1600, 300); }},
    {"compact-toolbar",
     [](auto& c) {
         c.settings.compactToolbar = true;
         c.settings.showHistoryInSubtitleToolbar = true;
         talk(c);
     },
     {},
     false},
    {"file",
     [](auto& c) {
         c.soundName = std::string("A talk about the age of wisdom, 3 March.mp3");
         talk(c);
     },
     {},
     false},
    {"translucent",
     [](auto& c) {
         c.settings.bgOpacity = 40;
         talk(c);
     }},
    {"translucent-over-white",
     [](auto& c) {
         c.settings.bgOpacity = 40;
         talk(c);
     }},
    {"stopping",
     [](auto& c) {
         talk(c);
         c.enter(LiveSessionPhase::stopping, Kind::saving);
     }},
    {"compressing",
     [](auto& c) {
         talk(c);
         c.speak("");
         c.enter(LiveSessionPhase::idle, Kind::compressing);
     },
     {},
     false},
    {"stopped-after-silence",
     [](auto& c) {
         talk(c);
         c.speak("");
         c.enter(LiveSessionPhase::stopping, Kind::inactive);
         c.session.status = SessionStatus{Kind::inactive, {}, 10};
     },
     {},
     false},
    {"no-translation-model",
     [](auto& c) {
         talk(c);
         c.lacksModel = true;
         c.frame.translationStatus = {
             std::string(TranslationSupport::languageResourceNotReadyMessage("zh-Hans")), true,
             true};
     },
     {},
     false},
    {"interrupted",
     [](auto& c) {
         talk(c);
         c.enter(LiveSessionPhase::listening, Kind::interrupted);
     }},
    {"incomplete",
     [](auto& c) {
         talk(c);
         c.settle("It was the spring of hope.");
         c.settle("It was the winter of despair.");
         c.frame.translationStatus = {
             localized("连续 %lld 条译文未完成，Apple 翻译可能暂不可用", {"3"}), true, true};
     }},
    {"notice",
     [](auto& c) {
         c.notice = CaptionNotice{
             localized("There is no sound server: %@", {"Connection refused"}) + "\n" +
                 localized("Nothing can be recorded: %@",
                           {"/home/somebody/.local/share/Tessarune: no space left on device"}),
             true};
     },
     {},
     false},
    {"menu",
     [](auto& c) {
         c.settings.showCopyBilingualInSubtitleToolbar = true;
         c.settings.showClearSubtitlesInSubtitleToolbar = true;
         c.session.hasVisibleSourceTextFlag = true;
         c.session.inputDevices =
             std::vector<AudioInputDevices::Device>{{"usb", "USB Microphone", true}};
         talk(c);
     },
     [](StagedCaptions& c) {
         press(c, Qt::RightButton, {300, 20});
     }},
    {"small", talkWithEverything,
     [](StagedCaptions& c) {
         pressInSmallWindow(c, Qt::RightButton, {200, 120});
     },
     false},
    {"small-sources", talkWithEverything,
     [](StagedCaptions& c) {
         pressInSmallWindow(c, Qt::LeftButton, {140, 22});
     },
     false},
    {"half", wantEverything, [](auto& c) { c.window->window().resize(520, 260); }, false},
    {"large-desktop-text", talk, {}, false},
    {"large-desktop-text-notice",
     [](auto& c) {
         wantEverything(c);
         talk(c);
         c.notice = CaptionNotice{
             localized("Nothing can be recorded: %@", {"/home/somebody: no space left"}), true};
     },
     {},
     false},
    {"first-words",
     [](auto& c) {
         c.enter(LiveSessionPhase::listening, Kind::none);
         c.speak("It was the best");
     }},
};

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

/// Also sets the colours of the windows that are drawn afterwards.
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

/// The page of the first start: what is asked, a download, and the sample's captions.
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

bool draw(const Picture& picture, SubtitleLayoutMode layout, const QString& file) {
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

/// Draws all pictures; with a name, only the picture of the caption window with this name.
int drawAll(const QString& folder, const QString& name) {
    QDir().mkpath(folder);
    for (const Picture& picture : pictures) {
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
