#pragma once

#include <QByteArray>

#include <cstdio>

/// A temporary file that holds a text and stands at its beginning.
class TextFile
{
public:
    explicit TextFile(const QByteArray &text = QByteArray()) : file(std::tmpfile())
    {
        if (!file)
            qFatal("no temporary file");
        std::fwrite(text.constData(), 1, static_cast<std::size_t>(text.size()), file);
        std::rewind(file);
    }
    ~TextFile() { std::fclose(file); }
    TextFile(const TextFile &) = delete;
    TextFile &operator=(const TextFile &) = delete;

    operator std::FILE *() const { return file; }

    QByteArray content() const
    {
        QByteArray result;
        std::rewind(file);
        for (int character = std::getc(file); character != EOF; character = std::getc(file))
            result.append(static_cast<char>(character));
        return result;
    }

private:
    std::FILE *file;
};
