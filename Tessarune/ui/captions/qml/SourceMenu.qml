import QtQuick
import Tessarune

// The menu of the sound sources.
PopupMenu {
    id: root

    required property CaptionToolbarModel toolbar

    title: toolbar.texts.source
    model: toolbar.sources
    onIsOpenChanged: currentIndex = toolbar.currentSource
    delegate: MenuEntry {
        required property int index
        required property string display

        width: ListView.view.width
        label: display
        isOn: index === root.toolbar.currentSource
        isCurrent: ListView.isCurrentItem
        onActivated: {
            root.close();
            root.toolbar.selectSource(index);
        }
    }
}
