#pragma once

#include <QList>
#include <QLocale>

/// Languages of desktops that write numbers each in its own way.
QList<QLocale> desktopLanguages();

/// Sets the language that the program takes from the desktop, for as long as this object lives.
class DefaultLanguage
{
public:
    explicit DefaultLanguage(const QLocale &language) { QLocale::setDefault(language); }
    ~DefaultLanguage() { QLocale::setDefault(before); }
    DefaultLanguage(const DefaultLanguage &) = delete;
    DefaultLanguage &operator=(const DefaultLanguage &) = delete;

private:
    const QLocale before;
};

/// Adds rows "pasted" and "shown": what is pasted over the 4.0 of a number between 0.5 and 8 with
/// one decimal, and what then stands there.
void addPastedNumbers();
