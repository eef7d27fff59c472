import QtQuick
import Tessarune

// A line drawing of 16 by 16 units.
Canvas {
    id: root

    required property string name
    property color color: Theme.quiet

    readonly property var strokes: ({
        recognition: [[2, 6.5, 2, 9.5], [5, 4, 5, 12], [8, 2, 8, 14], [11, 5, 11, 11], [14, 6.5, 14, 9.5]],
        translation: [[2, 3.5, 8.5, 3.5], [5.2, 2, 5.2, 3.5], [7.4, 3.5, 6.4, 6, 4.6, 8.2, 2.2, 9.8], [3.4, 5.4, 5, 7.8, 7.4, 9.6], [7.5, 14, 10.8, 6.5, 14.1, 14], [8.7, 11.4, 12.9, 11.4]],
        captions: [[2.5, 3, 13.5, 3, 14, 3.5, 14, 12.5, 13.5, 13, 2.5, 13, 2, 12.5, 2, 3.5, 2.5, 3], [4.5, 8, 8, 8], [10, 8, 11.5, 8], [4.5, 10.5, 6, 10.5], [8, 10.5, 11.5, 10.5]],
        recording: [[8, 2, 11, 2.8, 13.2, 5, 14, 8, 13.2, 11, 11, 13.2, 8, 14, 5, 13.2, 2.8, 11, 2, 8, 2.8, 5, 5, 2.8, 8, 2], [8, 6.6, 9.4, 8, 8, 9.4, 6.6, 8, 8, 6.6]],
        shortcuts: [[2, 4, 14, 4, 14, 12, 2, 12, 2, 4], [4.5, 6.6, 4.6, 6.6], [7, 6.6, 7.1, 6.6], [9.4, 6.6, 9.5, 6.6], [11.7, 6.6, 11.8, 6.6], [5, 9.6, 11, 9.6]],
        advanced: [[2, 4.5, 8.5, 4.5], [11.5, 4.5, 14, 4.5], [8.5, 3, 11.5, 3, 11.5, 6, 8.5, 6, 8.5, 3], [2, 11.5, 4.5, 11.5], [7.5, 11.5, 14, 11.5], [4.5, 10, 7.5, 10, 7.5, 13, 4.5, 13, 4.5, 10]],
        about: [[8, 2, 11, 2.8, 13.2, 5, 14, 8, 13.2, 11, 11, 13.2, 8, 14, 5, 13.2, 2.8, 11, 2, 8, 2.8, 5, 5, 2.8, 8, 2], [8, 7.4, 8, 11], [8, 5, 8, 5.1]],
        search: [[7, 2.5, 9.6, 3.4, 11.2, 5.6, 11.2, 8.4, 9.6, 10.6, 7, 11.5, 4.4, 10.6, 2.8, 8.4, 2.8, 5.6, 4.4, 3.4, 7, 2.5], [10.2, 10.2, 13.8, 13.8]],
        restore: [[3, 3, 3, 6.5, 6.5, 6.5], [3, 6.5, 5, 4.4, 8, 3.4, 11.2, 4.6, 13, 7.6, 12.4, 11, 9.8, 13.2, 6.4, 13.2, 4, 11.6]],
        down: [[4, 6, 8, 10, 12, 6]],
        check: [[3, 8.5, 6.5, 12, 13, 4.5]],
        close: [[4, 4, 12, 12], [12, 4, 4, 12]]
    })

    width: Math.round(Theme.body * 1.15)
    height: width
    onColorChanged: requestPaint()
    onNameChanged: requestPaint()
    onPaint: {
        const context = getContext("2d");
        context.reset();
        context.scale(width / 16, height / 16);
        context.lineWidth = 1.4 * 16 / Math.max(width, 12);
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
