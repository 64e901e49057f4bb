#include "app/mainwindow.h"
#include "bench/firstpaint.h"

#include <QApplication>
#include <QFont>

/// The suite as its own entry point starts it, up to the first paint.
int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("velantor-suite"));
    MainWindow window;
    FirstPaint paint(&window);
    window.show();
    application.setFont(QFont(QStringLiteral("Arial"), 9));
    return application.exec();
}
