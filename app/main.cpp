#include "app/look.h"
#include "app/mainwindow.h"
#include "editors/screenroom.h"

#include <QApplication>

int main(int argc, char *argv[])
{
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    QApplication application(argc, argv);
    MainWindow window;
    // On a small or much enlarged screen the lowest buttons would stand below its edge.
    window.resize(window.size().boundedTo(roomOnScreen(&window)));
    window.show();
    setSuiteLook();
    return application.exec();
}
