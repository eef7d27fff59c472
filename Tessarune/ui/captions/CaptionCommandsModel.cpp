#include "Tessarune/ui/captions/CaptionCommandsModel.h"

#include "Tessarune/ui/captions/ShortcutKeys.h"

#include <QClipboard>
#include <QGuiApplication>

namespace tessarune {

CaptionCommandsModel::CaptionCommandsModel(const CaptionWindowEnvironment& environment,
                                           const CaptionToolbarModel& toolbar)
    : environment_(environment), toolbar_(toolbar), sources_(toolbar.sources()), commands_(commands()) {
    const auto changed = [this] { announceChange(); };
    observations_.follow(environment_.session.hasVisibleSourceTextFlag, changed);
    connect(&toolbar_, &CaptionToolbarModel::sessionChanged, this, changed);
    connect(&toolbar_, &CaptionToolbarModel::settingsChanged, this, changed);
    connect(&toolbar_, &CaptionToolbarModel::sourcesChanged, this, [this] { sourcesChanged(); });
    for (const Command& command : commands_) {
        if (!command.shortcut)
            continue;
        endObservations_.push_back(command.shortcut->keyCode.onChange(changed));
        endObservations_.push_back(command.shortcut->modifiers.onChange(changed));
    }
}

CaptionCommandsModel::~CaptionCommandsModel() {
    for (const auto& end : endObservations_)
        end();
}

std::vector<CaptionCommandsModel::Command> CaptionCommandsModel::commands() const {
    const AppSettings& settings = environment_.settings;
    const auto hasText = [this] { return *environment_.session.hasVisibleSourceTextFlag; };
    std::vector<Command> all{
        {[this] { return toolbar_.toggleText(); }, [this] { toolbar_.toggleByMenu(); },
         &settings.shortcutToggleRecord, {}, {}, false, [this] { toolbar_.toggleByKey(); }},
        {[this] { return toolbar_.layoutText(); }, [this] { toolbar_.cycleLayout(); },
         &settings.shortcutLyricsLayout, [this] { return toolbar_.hasLayouts(); }, {}, true},
        {[this] { return toolbar_.swapText(); }, [this] { toolbar_.swapOrder(); },
         &settings.shortcutSwapLayout, [this] { return toolbar_.hasLayouts(); },
         [this] { return toolbar_.swaps(); }},
        {[this] { return toolbar_.keepOnTopText(); }, [this] { toolbar_.togglePin(); },
         &settings.shortcutPin, {}, [this] { return toolbar_.keepsOnTop(); }},
        {[this] { return toolbar_.copyText(); }, [this] { copy(true); }, &settings.shortcutCopy,
         hasText, {}, true},
        {[this] { return toolbar_.copyOriginalText(); }, [this] { copy(false); },
         &settings.shortcutCopyOriginal, hasText},
        {[this] { return toolbar_.clearText(); }, [this] { clear(); }, &settings.shortcutClear,
         hasText},
    };
    for (int i = 0; i < sources_.size(); ++i) {
        all.push_back({[this, i] { return sources_[i]; }, [this, i] { toolbar_.selectSource(i); },
                       nullptr, {}, [this, i] { return toolbar_.currentSource() == i; }, i == 0});
    }
    all.push_back({[this] { return toolbar_.closeText(); }, [this] { environment_.commands.close(); },
                   &settings.shortcutToggleWindow, {}, {}, true});
    return all;
}

void CaptionCommandsModel::sourcesChanged() {
    if (sources_ == toolbar_.sources()) { // another one is chosen
        announceChange();
        return;
    }
    beginResetModel();
    sources_ = toolbar_.sources();
    commands_ = commands();
    endResetModel();
}

void CaptionCommandsModel::announceChange() {
    Q_EMIT dataChanged(index(0), index(rowCount() - 1));
}

const CaptionCommandsModel::Command* CaptionCommandsModel::at(int row) const {
    return row >= 0 && row < rowCount() ? &commands_[static_cast<std::size_t>(row)] : nullptr;
}

int CaptionCommandsModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(commands_.size());
}

QVariant CaptionCommandsModel::data(const QModelIndex& index, int role) const {
    const Command* const command = at(index.row());
    if (!command)
        return {};
    const QKeySequence keys = command->shortcut ? keysOf(*command->shortcut) : QKeySequence();
    switch (role) {
    case TextRole:
        return command->text();
    case KeysRole:
        return keys.toString(QKeySequence::PortableText);
    case KeysTextRole:
        return keys.toString(QKeySequence::NativeText);
    case EnabledRole:
        return !command->isEnabled || command->isEnabled();
    case CheckedRole:
        return command->isChecked && command->isChecked();
    case FirstOfGroupRole:
        return command->isFirstOfGroup;
    default:
        return {};
    }
}

QHash<int, QByteArray> CaptionCommandsModel::roleNames() const {
    return {{TextRole, "text"},         {KeysRole, "keys"},       {KeysTextRole, "keysText"},
            {EnabledRole, "available"}, {CheckedRole, "checked"}, {FirstOfGroupRole, "firstOfGroup"}};
}

void CaptionCommandsModel::choose(int row) const {
    // A copy: what it does may renew the list.
    if (const Command* const command = at(row))
        std::function(command->run)();
}

void CaptionCommandsModel::press(int row) const {
    const Command* const command = at(row);
    if (command && command->runByKeys)
        std::function(command->runByKeys)();
    else
        choose(row);
}

void CaptionCommandsModel::copy(bool withTranslations) const {
    const TranscriptSnapshot shown = environment_.commands.visibleText();
    QGuiApplication::clipboard()->setText(
        QString::fromStdString(withTranslations ? shown.bilingualText : shown.sourceText));
}

} // namespace tessarune
