// Text in the monospaced design: figures that change must not move what stands beside them.
NotchText {
    font.family: "JetBrains Mono"
}
