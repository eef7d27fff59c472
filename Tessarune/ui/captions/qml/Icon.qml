import QtQuick
import Tessarune

// A line drawing of 16 by 16 units.
Canvas {
    id: root

    required property string name
    property color color: "#e6e6ea"

    // The strokes of the icons. A stroke lists the x and y of its points in turn.
    readonly property var strokes: ({
        close: [[4, 4, 12, 12], [12, 4, 4, 12]],
        check: [[3, 8.5, 6.5, 12, 13, 4.5]],
        down: [[3, 5.5, 8, 10.5, 13, 5.5]],
        swap: [[5, 13, 5, 3, 2, 6], [5, 3, 8, 6], [11, 3, 11, 13, 8, 10], [11, 13, 14, 10]],
        layout: [[2.5, 4, 13.5, 4], [2.5, 7, 10, 7], [2.5, 10.5, 13.5, 10.5], [2.5, 13.5, 10, 13.5]],
        copy: [[5.5, 5.5, 13.5, 5.5, 13.5, 13.5, 5.5, 13.5, 5.5, 5.5], [10.5, 2.5, 2.5, 2.5, 2.5, 10.5]],
        copyOriginal: [[3.5, 2.5, 12.5, 2.5, 12.5, 13.5, 3.5, 13.5, 3.5, 2.5], [6, 6, 10, 6], [6, 9.5, 10, 9.5]],
        clear: [[6, 3.5, 14, 3.5, 14, 12.5, 6, 12.5, 2, 8, 6, 3.5], [8, 6.2, 11.6, 9.8], [11.6, 6.2, 8, 9.8]],
        history: [[3, 8, 3.8, 5.2, 6, 3.4, 8.6, 3, 11.2, 4.1, 12.8, 6.4, 13, 9.2, 11.6, 11.7, 9, 13, 6.2, 12.7, 4, 11], [1.2, 6.4, 3, 8.4, 5, 6.6], [8.2, 5.6, 8.2, 8.4, 10.4, 9.6]],
        settings: [[2, 4.5, 14, 4.5], [2, 8, 14, 8], [2, 11.5, 14, 11.5], [5, 3, 5, 6], [11, 6.5, 11, 9.5], [6.5, 10, 6.5, 13]],
        more: [3.7, 7.7, 11.7].map(x => [x, 7.7, x + 0.6, 7.7, x + 0.6, 8.3, x, 8.3, x, 7.7]),
        pin: [[5.5, 2.5, 10.5, 2.5], [6.5, 2.5, 6.5, 7, 4, 9.5, 12, 9.5, 9.5, 7, 9.5, 2.5], [8, 9.5, 8, 14]]
    })

    width: Theme.icon
    height: width
    onColorChanged: requestPaint()
    onNameChanged: requestPaint()
    onVisibleChanged: requestPaint() // changes of a hidden item are perhaps not painted yet
    onPaint: {
        const context = getContext("2d");
        context.reset();
        context.scale(width / 16, height / 16);
        context.lineWidth = 1.5 * Math.max(1, 16 / width);
        context.lineCap = "round";
        context.lineJoin = "round";
        context.strokeStyle = root.color;
        for (const points of root.strokes[root.name]) {
            context.beginPath();
            context.moveTo(points[0], points[1]);
            for (let i = 2; i < points.length; i += 2)
                context.lineTo(points[i], points[i + 1]);
            context.stroke();
        }
    }
}
