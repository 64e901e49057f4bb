#include "app/mainwindow.h"

#include <QApplication>
#include <QFont>

int main(int argc, char *argv[])
{
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    QApplication application(argc, argv);
    MainWindow window;
    window.show();
    application.setStyleSheet(QStringLiteral(
        "QLineEdit{border-color: rgb(176, 174, 171);border-width:  2px;border-style: inset;"
        "border-radius: 3px;padding: 1px;padding-top: 0px;padding-bottom: 0px;}"
        "QLineEdit:!enabled{border: none;color: black;}"));
    application.setFont(QFont(QStringLiteral("Arial"), 9));
    return application.exec();
}
