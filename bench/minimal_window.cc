// The least that a program with a window of the toolkit does.
#include <QApplication>
#include <QLabel>

int main(int count, char** values) {
    const QApplication application(count, values);
    QLabel label(QStringLiteral("window"));
    label.resize(820, 620);
    label.show();
    return QApplication::exec();
}
