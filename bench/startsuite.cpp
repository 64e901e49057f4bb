#include "app/look.h"
#include "app/mainwindow.h"
#include "bench/firstpaint.h"

#include <QApplication>

/// The suite as its own entry point starts it, up to the first paint.
int main(int argc, char *argv[])
{
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    QApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("velantor-suite"));
    MainWindow window;
    FirstPaint paint(&window);
    window.show();
    setSuiteLook();
    return application.exec();
}
