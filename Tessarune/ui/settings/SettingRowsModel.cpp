#include "Tessarune/ui/settings/SettingRowsModel.h"

#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/Text.h"

#include <QStringList>
#include <algorithm>
#include <cmath>
#include <utility>

namespace tessarune {

namespace {

/// The delay before a slider's value is stored, because each stored value is a write to the disk.
constexpr double slidingSeconds = 0.08;

QString controlName(SettingControl control) {
    switch (control) {
    case SettingControl::toggle:
        return QStringLiteral("toggle");
    case SettingControl::choice:
        return QStringLiteral("choice");
    case SettingControl::number:
        return QStringLiteral("number");
    case SettingControl::color:
        return QStringLiteral("color");
    case SettingControl::text:
        return QStringLiteral("text");
    case SettingControl::elsewhere:
        return QStringLiteral("elsewhere");
    }
    return {};
}

/// The value as a message shows it.
std::string spokenValue(const SettingEntry& entry) {
    const std::string text = entry.setting->text();
    if (entry.control == SettingControl::toggle)
        return text == "true" ? localized("开") : localized("关");
    return entry.choiceName ? entry.choiceName(text) : text;
}

/// Rounds to thousandths: a slider's value is a sum of steps, which binary fractions represent
/// inexactly.
std::string plainNumber(double value) {
    std::string text = Text::shortest(std::round(value * 1000) / 1000);
    if (text.ends_with(".0"))
        text.resize(text.size() - 2);
    return text;
}

QVariant valueOf(const SettingEntry& entry) {
    const QString text = QString::fromStdString(entry.setting->text());
    switch (entry.control) {
    case SettingControl::toggle:
        return text == QStringLiteral("true");
    case SettingControl::number:
        return text.toDouble();
    case SettingControl::text: // an empty field stands for the default
        return entry.setting->text() == entry.setting->defaultText() ? QString() : text;
    case SettingControl::choice:
    case SettingControl::color:
    case SettingControl::elsewhere:
        break;
    }
    return text;
}

} // namespace

SettingRowsModel::SettingRowsModel(Host& host, Headings headings)
    : host_(host), headings_(headings) {}

SettingRowsModel::~SettingRowsModel() {
    storing_.cancel();
    storeSliding();
    forget();
}

void SettingRowsModel::forget() {
    for (const auto& end : std::exchange(endObservations_, {}))
        end();
}

void SettingRowsModel::show(std::vector<SettingEntry> entries) {
    storeSliding();
    beginResetModel();
    forget();
    entries_ = std::move(entries);
    refused_.assign(entries_.size(), {});
    for (int row = 0; row < rowCount(); ++row) {
        const SettingEntry& entry = entries_[static_cast<std::size_t>(row)];
        endObservations_.push_back(entry.setting->onChange([this, row] { accept(row); }));
        if (entry.needs)
            endObservations_.push_back(entry.needs->onChange([this, row] { announce(row); }));
    }
    endResetModel();
}

const SettingEntry* SettingRowsModel::at(int row) const {
    return row >= 0 && row < rowCount() ? &entries_[static_cast<std::size_t>(row)] : nullptr;
}

int SettingRowsModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(entries_.size());
}

QHash<int, QByteArray> SettingRowsModel::roleNames() const {
    return {{TitleRole, "title"},
            {AboutRole, "about"},
            {SectionRole, "section"},
            {ControlRole, "control"},
            {ValueRole, "value"},
            {ValueTextRole, "valueText"},
            {ChoicesRole, "choices"},
            {CurrentRole, "current"},
            {FromRole, "from"},
            {ToRole, "to"},
            {StepRole, "step"},
            {ChangedRole, "changed"},
            {AvailableRole, "available"},
            {ProblemRole, "problem"},
            {PaneRole, "pane"}};
}

std::string SettingRowsModel::sectionOf(const SettingEntry& entry) const {
    return localized(headings_ == Headings::panes ? tessarune::title(entry.pane) : entry.section);
}

int SettingRowsModel::currentChoice(const SettingEntry& entry) const {
    const auto choices = entry.setting->choices();
    const auto found = std::ranges::find(choices, entry.setting->text());
    return found == choices.end() ? -1 : static_cast<int>(found - choices.begin());
}

std::string SettingRowsModel::problemOf(int row) const {
    const SettingEntry& entry = *at(row);
    if (const std::string& typed = refused_[static_cast<std::size_t>(row)]; !typed.empty())
        return localized("“%@”无效。可填：%@。", {typed, entry.setting->expected()});
    if (entry.setting->isUnreadable())
        return localized("设置文件里的值无效，现改用“%@”。", {spokenValue(entry)});
    if (entry.control == SettingControl::choice && currentChoice(entry) < 0)
        return localized("设置文件里的“%@”不是可选的值。", {entry.setting->text()});
    return {};
}

QVariant SettingRowsModel::data(const QModelIndex& index, int role) const {
    const SettingEntry* const entry = at(index.row());
    if (!entry)
        return {};
    const auto shown = [](const std::string& text) { return QString::fromStdString(text); };
    switch (role) {
    case TitleRole:
        return shown(localized(entry->title));
    case AboutRole:
        return shown(entry->aboutText());
    case SectionRole: {
        const SettingEntry* const above = at(index.row() - 1);
        const std::string section = sectionOf(*entry);
        return above && sectionOf(*above) == section ? QString() : shown(section);
    }
    case ControlRole:
        return controlName(entry->control);
    case ValueRole:
        return valueOf(*entry);
    case ValueTextRole:
        return entry->control == SettingControl::number
                   ? numberText(index.row(), valueOf(*entry).toDouble())
                   : shown(entry->setting->text());
    case ChoicesRole: {
        QStringList names;
        if (entry->control == SettingControl::choice) {
            for (const auto& choice : entry->setting->choices())
                names << shown(entry->choiceName ? entry->choiceName(choice) : choice);
        }
        return names;
    }
    case CurrentRole:
        return currentChoice(*entry);
    case FromRole:
        return entry->scale.from;
    case ToRole:
        return entry->scale.to;
    case StepRole:
        return entry->scale.step;
    case ChangedRole:
        return entry->setting->text() != entry->setting->defaultText() ||
               !problemOf(index.row()).empty();
    case AvailableRole:
        return !entry->needs || **entry->needs;
    case ProblemRole:
        return shown(problemOf(index.row()));
    case PaneRole:
        return shown(std::string(name(entry->pane)));
    default:
        return {};
    }
}

void SettingRowsModel::announce(int row) {
    Q_EMIT dataChanged(index(row), index(row));
}

void SettingRowsModel::set(int row, const std::string& text) {
    const SettingEntry* const entry = at(row);
    if (!entry)
        return;
    if (entry->setting->setText(text)) {
        accept(row);
        return;
    }
    refused_[static_cast<std::size_t>(row)] = text;
    announce(row);
}

void SettingRowsModel::toggle(int row, bool on) {
    set(row, on ? "true" : "false");
}

void SettingRowsModel::choose(int row, int choice) {
    const SettingEntry* const entry = at(row);
    if (!entry)
        return;
    const auto choices = entry->setting->choices();
    if (choice >= 0 && choice < static_cast<int>(choices.size()))
        set(row, choices[static_cast<std::size_t>(choice)]);
}

void SettingRowsModel::slide(int row, double value) {
    if (sliding_ && sliding_->row != row)
        storeSliding();
    const bool isStoring = sliding_.has_value();
    sliding_ = Sliding{row, plainNumber(value)};
    if (!isStoring)
        storing_ = host_.after(slidingSeconds, [this] { storeSliding(); });
}

void SettingRowsModel::storeSliding() {
    storing_.cancel();
    if (const auto done = std::exchange(sliding_, std::nullopt))
        set(done->row, done->text);
}

void SettingRowsModel::write(int row, const QString& text) {
    const std::string typed = text.trimmed().toStdString();
    const SettingEntry* const entry = at(row);
    if (typed.empty())
        restore(row);
    else if (entry && typed == entry->setting->text())
        accept(row);
    else
        set(row, typed);
}

void SettingRowsModel::restore(int row) {
    if (const SettingEntry* const entry = at(row)) {
        entry->setting->restore();
        accept(row);
    }
}

/// Forgets a refused text. A setting that keeps its value does not call its observer; one that
/// changes may have replaced the rows.
void SettingRowsModel::accept(int row) {
    if (!at(row))
        return;
    refused_[static_cast<std::size_t>(row)].clear();
    announce(row);
}

QString SettingRowsModel::numberText(int row, double value) const {
    const SettingEntry* const entry = at(row);
    return entry ? QString::fromStdString(localized(entry->scale.format, {plainNumber(value)}))
                 : QString();
}

} // namespace tessarune
