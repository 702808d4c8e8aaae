#include "ui/theme/Colours.h"

namespace larkspur::ui {

namespace {

QColor blend(const QColor &front, const QColor &back, double share) {
    const auto mix = [share](int a, int b) { return static_cast<int>(a * share + b * (1 - share)); };
    return {mix(front.red(), back.red()), mix(front.green(), back.green()), mix(front.blue(), back.blue())};
}

} // namespace

bool isDark(const QPalette &palette) {
    return palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
}

QColor mutedText(const QPalette &palette) {
    return blend(palette.color(QPalette::WindowText), palette.color(QPalette::Window), 0.62);
}

QColor raisedSurface(const QPalette &palette) {
    return blend(palette.color(QPalette::WindowText), palette.color(QPalette::Window), 0.05);
}

QColor separator(const QPalette &palette) {
    return blend(palette.color(QPalette::WindowText), palette.color(QPalette::Window), 0.14);
}

QColor toneColour(Tone tone, const QPalette &palette) {
    const bool dark = isDark(palette);
    switch (tone) {
    case Tone::Good:
        return dark ? QColor(0x6f, 0xcf, 0x8e) : QColor(0x1b, 0x7f, 0x43);
    case Tone::Attention:
        return dark ? QColor(0xf0, 0xb4, 0x5a) : QColor(0xa0, 0x5a, 0x00);
    case Tone::Bad:
        return dark ? QColor(0xf2, 0x7e, 0x78) : QColor(0xb8, 0x2c, 0x25);
    case Tone::Neutral:
        break;
    }
    return mutedText(palette);
}

QColor toneGround(Tone tone, const QPalette &palette) {
    return blend(toneColour(tone, palette), palette.color(QPalette::Base), 0.14);
}

QPalette darkPalette() {
    QPalette palette;
    const QColor window(0x20, 0x21, 0x25);
    const QColor base(0x2a, 0x2b, 0x30); // lighter than the window, so that fields and boxes stand out
    const QColor text(0xe8, 0xe8, 0xea);
    const QColor disabled(0x7a, 0x7b, 0x80);
    palette.setColor(QPalette::Window, window);
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Base, base);
    palette.setColor(QPalette::AlternateBase, QColor(0x2f, 0x30, 0x36));
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::PlaceholderText, disabled);
    palette.setColor(QPalette::Button, QColor(0x3a, 0x3b, 0x41));
    palette.setColor(QPalette::ButtonText, text);
    palette.setColor(QPalette::ToolTipBase, QColor(0x35, 0x36, 0x3b));
    palette.setColor(QPalette::ToolTipText, text);
    palette.setColor(QPalette::Highlight, QColor(0x5b, 0x5f, 0xd6));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Link, QColor(0x9a, 0xa4, 0xff));
    palette.setColor(QPalette::Light, QColor(0x45, 0x46, 0x4c));
    palette.setColor(QPalette::Mid, QColor(0x30, 0x31, 0x36));
    palette.setColor(QPalette::Dark, QColor(0x16, 0x17, 0x19));
    palette.setColor(QPalette::Shadow, Qt::black);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, disabled);
    return palette;
}

} // namespace larkspur::ui
