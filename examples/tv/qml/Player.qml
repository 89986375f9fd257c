import QtQuick
import QtMultimedia

// Plays a stream, with what keys a remote has for that.
Rectangle {
    id: player
    required property url stream
    color: "black"
    focus: true
    Keys.onPressed: event => {
        if (event.key === Qt.Key_Space || event.key === Qt.Key_Return
                || event.key === Qt.Key_MediaTogglePlayPause || event.key === Qt.Key_MediaPlay) {
            media.playbackState === MediaPlayer.PlayingState ? media.pause() : media.play();
            event.accepted = true;
        }
    }

    MediaPlayer {
        id: media
        source: player.stream
        videoOutput: output
        audioOutput: AudioOutput {}
        Component.onCompleted: play()
    }
    VideoOutput {
        id: output
        anchors.fill: parent
    }
    Text {
        anchors { bottom: parent.bottom; bottomMargin: 48; horizontalCenter: parent.horizontalCenter }
        text: media.error !== MediaPlayer.NoError ? "This cannot be played at the moment."
            : media.playbackState === MediaPlayer.PlayingState ? "" : "Paused"
        color: Style.text
        font.pixelSize: Style.large
    }
}
