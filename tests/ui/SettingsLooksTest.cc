// Colours that can be read, and texts that have room.
#include <QGroupBox>
#include <cmath>

#include "Ferrivane/linux/ui/Symbols.h"
#include "tests/ui/SettingsCase.h"

// What the font library keeps until the process ends. The name is the leak checker's.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libfontconfig";
}
// NOLINTEND(bugprone-reserved-identifier)

namespace ferrivane {
namespace {

namespace C = SettingsControls;

double luminance(const QColor& colour) {
    const auto part = [](float value) {
        return value <= 0.04045F ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * part(colour.redF()) + 0.7152 * part(colour.greenF()) +
           0.0722 * part(colour.blueF());
}

// As WCAG 2.1 defines it.
double contrast(const QColor& one, const QColor& other) {
    const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
    return (lighter + 0.05) / (darker + 0.05);
}

TEST(ColourTest, EveryTintCanBeReadOnLightAndDark) {
    for (const QColor& window :
         {QColor(255, 255, 255), QColor(239, 239, 239), QColor(42, 46, 50), QColor(0, 0, 0)}) {
        const QPalette palette(window, window);
        for (const Tint tint : {Tint::text, Tint::secondary, Tint::red}) {
            EXPECT_GE(contrast(colour(tint, palette), window), 4.5)
                << static_cast<int>(tint) << " on " << window.name().toStdString();
        }
        for (const Tint tint : {Tint::green, Tint::orange}) {
            EXPECT_GE(contrast(colour(tint, palette), window), 3.0)
                << static_cast<int>(tint) << " on " << window.name().toStdString();
        }
    }
}

TEST(SymbolTest, EachIsDrawnInTheColourOfItsTint) {
    test::application();
    for (const char* name :
         {"checkmark.circle.fill", "exclamationmark.triangle.fill", "exclamationmark.triangle",
          "line.3.horizontal", "app.badge.checkmark", "arrow.right", "minus.circle", "plus"}) {
        const QImage image = symbolIcon(name, Tint::orange).pixmap(48).toImage();
        const QColor ink = colour(Tint::orange, QApplication::palette());
        int inked = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) inked += image.pixelColor(x, y) == ink ? 1 : 0;
        }
        EXPECT_GT(inked, 48) << name;
        EXPECT_LT(inked, 48 * 48 * 9 / 10) << name;
    }
    EXPECT_FALSE(applicationIcon().isNull());
}

class SettingsLooksTest : public test::SettingsCase {
  protected:
    ~SettingsLooksTest() override { QApplication::setFont(font_); }

    const QFont font_ = (test::application(), QApplication::font());
};

TEST_F(SettingsLooksTest, ALongProfileNameIsShortenedAndWholeInTheToolTip) {
    const std::string name(120, 'w');
    writeCatalogue({{"Default", name, {}, {}}});
    writeRules(R"({"rules": [{"kind": "url", "match": "x", "profile": "Default"}]})");
    open();
    auto* profile = inRow<QComboBox>(0, C::profile);
    EXPECT_EQ(profile->width(), 150);
    EXPECT_EQ(profile->toolTip().toStdString(), name);
    auto* shown = find<QComboBox>(C::defaultProfile);
    EXPECT_EQ(shown->toolTip().toStdString(), name) << "instead of the hint";
}

TEST(ToolTipTest, NoTextIsMarkup) {
    EXPECT_EQ(plainToolTip("a & b < c"), "a & b < c");
    EXPECT_EQ(plainToolTip("<b>x</b>"), "<qt>&lt;b&gt;x&lt;/b&gt;</qt>");
}

TEST_F(SettingsLooksTest, ALongWordDoesNotWidenTheWindow) {
    writeRules(R"({"rules": [{"kind": "url", "match": "x", "profile": ")" + std::string(300, 'w') +
               R"("}]})");
    open();
    QTest::keyClicks(find<QLineEdit>(C::testURL), "x");
    settle();
    EXPECT_EQ(window->width(), 820);
    EXPECT_EQ(window->minimumWidth(), 700);
    EXPECT_EQ(find<QLabel>(C::testResult)->toolTip(), find<QLabel>(C::testResult)->text());
}

// As long as the texts of languages that need a third more room.
TEST_F(SettingsLooksTest, LargerLettersStillHaveRoom) {
    QFont large = font_;
    large.setPointSizeF(large.pointSizeF() * 1.35);
    QApplication::setFont(large);
    open();
    window->resize(700, 520);
    settle();
    EXPECT_LE(window->centralWidget()->minimumSizeHint().width(), 700);
    for (const QWidget* button : window->findChildren<QPushButton*>()) {
        if (!button->isVisible()) continue;
        EXPECT_GE(button->width(), button->sizeHint().width())
            << button->objectName().toStdString();
    }
    for (const QLabel* label : window->findChildren<QLabel*>()) {
        if (!label->isVisible() || label->text().isEmpty()) continue;
        const QRect room(0, 0, label->width(), 10'000);
        const int flags = label->wordWrap() ? Qt::TextWordWrap : 0;
        const QRect needed =
            label->fontMetrics().boundingRect(room, flags, label->text().remove('&'));
        EXPECT_LE(needed.width(), label->width()) << label->text().toStdString();
        EXPECT_LE(needed.height(), label->height() + 1) << label->text().toStdString();
    }
}

TEST_F(SettingsLooksTest, AThemeMayChangeWhileTheWindowIsOpen) {
    open();
    const QPalette before = QApplication::palette();
    QApplication::setPalette(QPalette(QColor(49, 54, 59), QColor(42, 46, 50)));
    settle();
    const auto* problem = find<QLabel>(C::problem);
    const auto* result = find<QLabel>(C::testResult);
    EXPECT_EQ(problem->palette().color(QPalette::WindowText),
              colour(Tint::red, QApplication::palette()));
    EXPECT_EQ(result->palette().color(QPalette::WindowText),
              colour(Tint::secondary, QApplication::palette()));
    EXPECT_GE(contrast(match(0)->palette().color(QPalette::Text),
                       match(0)->palette().color(QPalette::Base)),
              4.5);
    QApplication::setPalette(before);
}

}  // namespace
}  // namespace ferrivane
