#include "Ferrivane/linux/ui/SavePanelWindow.h"

#include <QFileDialog>
#include <QGridLayout>
#include <QLabel>
#include <utility>

namespace ferrivane {

void showSavePanelWindow(const SavePanel::Question& question,
                         std::function<void(const SavePanel::Answer&)> answered) {
    const auto text = [](const std::string& utf8) { return QString::fromStdString(utf8); };
    auto* panel = new QFileDialog(nullptr, text(question.title), text(question.directory.string()));
    panel->setObjectName(QStringLiteral("savePanel"));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    // The desktop's own panel has no place for the message and makes folders.
    panel->setOptions(QFileDialog::DontUseNativeDialog | QFileDialog::ReadOnly);
    panel->setAcceptMode(QFileDialog::AcceptSave);
    panel->setFileMode(QFileDialog::AnyFile);
    panel->selectFile(text(question.fileName));
    panel->setLabelText(QFileDialog::Accept, text(question.button));

    if (auto* grid = qobject_cast<QGridLayout*>(panel->layout())) {
        auto* message = new QLabel(text(question.message), panel);
        message->setTextFormat(Qt::PlainText);
        message->setWordWrap(true);
        grid->addWidget(message, grid->rowCount(), 0, 1, grid->columnCount());
    }

    QObject::connect(panel, &QFileDialog::finished, panel,
                     [panel, answered = std::move(answered)](int response) {
                         SavePanel::Answer answer{.response = response, .file = {}};
                         const QStringList files = panel->selectedFiles();
                         if (response == QDialog::Accepted && !files.isEmpty()) {
                             answer.file = files.first().toStdString();
                         }
                         answered(answer);
                     });
    panel->show();
    panel->raise();
    panel->activateWindow();
}

}  // namespace ferrivane
