#include "bench/firstpaint.h"

#include <QApplication>
#include <QMainWindow>

/// The least that a window of this kind costs.
int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    QMainWindow window;
    window.resize(707, 730);
    FirstPaint paint(&window);
    window.show();
    return application.exec();
}
