#include "Ferrivane/linux/ui/Symbols.h"

#include <QApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QSvgRenderer>

namespace ferrivane {
namespace {

QColor mix(const QColor& one, const QColor& other, double share) {
    const auto part = [share](double a, double b) {
        return static_cast<float>(a + (b - a) * share);
    };
    return QColor::fromRgbF(part(one.redF(), other.redF()), part(one.greenF(), other.greenF()),
                            part(one.blueF(), other.blueF()));
}

class SymbolEngine : public QIconEngine {
  public:
    SymbolEngine(QString file, Tint tint) : file_(std::move(file)), tint_(tint) {}

    void paint(QPainter* painter, const QRect& place, QIcon::Mode mode, QIcon::State) override {
        const qreal ratio = painter->device()->devicePixelRatioF();
        QImage image((QSizeF(place.size()) * ratio).toSize(), QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter shape(&image);
        QSvgRenderer(file_).render(&shape);
        shape.setCompositionMode(QPainter::CompositionMode_SourceIn);
        QColor ink = colour(tint_, QApplication::palette());
        if (mode == QIcon::Disabled) ink.setAlphaF(0.4F);
        shape.fillRect(image.rect(), ink);
        shape.end();
        painter->drawImage(place, image);
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect({0, 0}, size), mode, state);
        return pixmap;
    }

    QIconEngine* clone() const override { return new SymbolEngine(*this); }

  private:
    QString file_;
    Tint tint_;
};

}  // namespace

QColor colour(Tint tint, const QPalette& palette) {
    const QColor window = palette.color(QPalette::Window);
    const bool isDark = window.lightnessF() < 0.5F;
    switch (tint) {
        case Tint::text:
            break;
        case Tint::secondary:
            return mix(palette.color(QPalette::WindowText), window, 0.3);
        case Tint::green:
            return isDark ? QColor(0x57, 0xc7, 0x7a) : QColor(0x1b, 0x87, 0x3f);
        case Tint::orange:
            return isDark ? QColor(0xff, 0xa9, 0x4d) : QColor(0xc0, 0x5a, 0x00);
        case Tint::red:
            return isDark ? QColor(0xff, 0x8a, 0x80) : QColor(0xb3, 0x1d, 0x28);
    }
    return palette.color(QPalette::WindowText);
}

QIcon symbolIcon(std::string_view name, Tint tint) {
    const auto text = QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size()));
    return QIcon(new SymbolEngine(":/symbols/" + text + ".svg", tint));
}

QIcon applicationIcon() {
    return QIcon::fromTheme(QStringLiteral("com.hollowmere.ferrivane"),
                            QIcon(QStringLiteral(":/symbols/application.svg")));
}

Symbol::Symbol(std::string_view name, Tint tint, int size) : size_(size) {
    setFixedSize(size, size);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    if (!name.empty()) display(name, tint);
}

void Symbol::display(std::string_view name, Tint tint) {
    icon_ = symbolIcon(name, tint);
    update();
}

void Symbol::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    icon_.paint(&painter, QRect(0, 0, size_, size_), Qt::AlignCenter,
                isEnabled() ? QIcon::Normal : QIcon::Disabled);
}

}  // namespace ferrivane
