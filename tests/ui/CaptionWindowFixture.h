#pragma once

#include "tests/ui/StagedCaptions.h"
#include "tests/ui/WarningsFail.h"

#include <QQuickItem>

namespace tessarune {

/// An open caption window with staged captions.
class CaptionWindowFixture : public WarningsFail {
  protected:
    CaptionWindowFixture() {
        captions.settings.smoothStreaming = false;
        captions.open();
    }

    QQuickItem* list() {
        return captions.window->window()
            .findChild<QQuickItem*>("sourceList")
            ->findChild<QQuickItem*>("list");
    }
    QQuickItem* rowAt(int index) {
        QQuickItem* row = nullptr;
        QMetaObject::invokeMethod(list(), "itemAtIndex", Q_RETURN_ARG(QQuickItem*, row),
                                  Q_ARG(int, index));
        return row;
    }
    QQuickItem* newest() { return rowAt(list()->property("count").toInt() - 1); }
    /// The height of the rows below the visible part of the list.
    double hiddenBelow() {
        return list()->property("originY").toDouble() +
               list()->property("contentHeight").toDouble() -
               list()->property("contentY").toDouble() - list()->height();
    }

    StagedCaptions captions;
};

} // namespace tessarune
