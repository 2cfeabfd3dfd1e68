// A program with one window, for tests of what looks at other programs' windows. Says on standard output what
// became of it. Arguments: KIND TITLE.
#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QInputDialog>
#include <QMainWindow>
#include <QMessageBox>
#include <QPushButton>
#include <cstdio>

namespace {

void Say(const QString& text) {
    std::puts(qPrintable(text));
    std::fflush(stdout);
}

int ShowPrintDialog(const QString& title) {
    QDialog dialog;
    dialog.setWindowTitle(title);
    QFormLayout layout(&dialog);
    QDialogButtonBox buttons(QDialogButtonBox::Cancel);
    QPushButton* const print = buttons.addButton("&" + title, QDialogButtonBox::AcceptRole);
    print->setDefault(true);
    layout.addRow("Ready to print.", &buttons);
    QObject::connect(&buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    QObject::connect(&buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    Say(dialog.exec() == QDialog::Accepted ? "printed" : "cancelled");
    return 0;
}

int ShowSaveDialog(const QString& title) {
    const QString name = QFileDialog::getSaveFileName(nullptr, title, "default.txt", QString(), nullptr,
                                                      QFileDialog::DontUseNativeDialog);
    Say(name.isEmpty() ? "cancelled" : "saved " + name);
    return 0;
}

int ShowPasswordBox(const QString& title) {
    bool isGiven = false;
    const QString word =
        QInputDialog::getText(nullptr, title, "Password:", QLineEdit::Password, "", &isGiven);
    Say(isGiven ? "given " + word : "cancelled");
    return 0;
}

int ShowMessage(const QString& title) {
    QMessageBox::critical(nullptr, title, "The font is bad.");
    Say("ok");
    return 0;
}

int ShowMainWindow(const QString& title) {
    QMainWindow window;
    window.setWindowTitle(title);
    window.show();
    const int result = QApplication::exec();
    Say("closed");
    return result;
}

}  // namespace

int main(int count, char** words) {
    const QApplication application(count, words);
    const QStringList arguments = QCoreApplication::arguments();
    const QString kind = arguments.value(1);
    const QString title = arguments.value(2);
    if (kind == "print") return ShowPrintDialog(title);
    if (kind == "save") return ShowSaveDialog(title);
    if (kind == "password") return ShowPasswordBox(title);
    if (kind == "message") return ShowMessage(title);
    if (kind == "main") return ShowMainWindow(title);
    return 2;
}
