#pragma once

#include "Tessarune/ui/controls/ListedRows.h"

#include <QString>
#include <QStringList>
#include <functional>

namespace tessarune {

/// The names of the sound sources, for a menu that may be open when they change. Main thread.
class CaptionSourcesModel final : public ListedRows<QString> {
  public:
    void update(const QStringList& names) { show({names.begin(), names.end()}, std::equal_to<>()); }
    QVariant data(const QModelIndex& index, int role) const override {
        const QString* const name = at(index.row());
        return name && role == Qt::DisplayRole ? *name : QVariant();
    }
};

} // namespace tessarune
