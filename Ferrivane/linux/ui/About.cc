#include "Ferrivane/linux/ui/About.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPointer>
#include <QVBoxLayout>

#include "Ferrivane/linux/ui/Banner.h"

namespace ferrivane {

void showAbout(const std::string& nameAndVersion, QWidget* parent) {
    static QPointer<QDialog> shown;
    if (!shown) {
        shown = new QDialog(parent);
        shown->setObjectName(QStringLiteral("about"));
        shown->setAttribute(Qt::WA_DeleteOnClose);
        shown->setWindowTitle(QStringLiteral("About Ferrivane"));
        auto* icon = new QLabel;
        icon->setPixmap(applicationIcon().pixmap(QSize(96, 96), parent->devicePixelRatioF()));
        icon->setAlignment(Qt::AlignCenter);
        QLabel* const name = plainLabel(nameAndVersion);
        QFont large = name->font();
        large.setBold(true);
        large.setPointSizeF(large.pointSizeF() * 1.3);
        name->setFont(large);
        QLabel* const what =
            plainLabel("Opens each link in the Chrome profile that it belongs to.");
        QLabel* const licence = plainLabel("© 2026 the Ferrivane authors. MIT licence.");
        auto* column = new QVBoxLayout(shown);
        column->setSizeConstraint(QLayout::SetFixedSize);
        column->setContentsMargins(32, 24, 32, 16);
        column->setSpacing(8);
        column->addWidget(icon);
        for (QLabel* line : {name, what, licence}) {
            line->setAlignment(Qt::AlignCenter);
            line->setWordWrap(false);
            column->addWidget(line);
        }
        auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
        QObject::connect(buttons, &QDialogButtonBox::rejected, shown, &QDialog::reject);
        column->addSpacing(8);
        column->addWidget(buttons);
    }
    shown->show();
    shown->raise();
    shown->activateWindow();
}

}  // namespace ferrivane
