#include "QtBeeper.h"

#include <QApplication>

void QtBeeper::makeBeep()
{
    QApplication::beep();
}
