#include "Documents.h"

#include "Failure.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>

namespace client
{

std::ifstream OpenFile(const std::string& file, std::string& why)
{
    std::ifstream stream(file, std::ios::binary);
    std::error_code error;
    if (!stream)
        why = errno == ENOENT ? "there is no such file" : std::strerror(errno);
    else if (std::filesystem::is_directory(file, error))
        why = "it is a folder";
    return stream;
}

Source ReadSource(const std::string& file)
{
    std::ostringstream text;
    // Some editors begin a text with it to say that it is UTF-8.
    const auto withoutMark = [&text]
    { return text.view().starts_with("\xEF\xBB\xBF") ? text.str().substr(3) : text.str(); };
    if (file == "-")
    {
        if (isatty(STDIN_FILENO) == 1)
            std::cerr << "Reading the document from standard input; Ctrl-D ends it.\n";
        text << std::cin.rdbuf();
        return {"standard input", withoutMark()};
    }
    std::string why;
    const std::ifstream stream = OpenFile(file, why);
    if (!why.empty())
        throw DocumentFailure(file, 0,
                              "it can't be read: " + why + ". Look at its name, and at who may read it");
    text << stream.rdbuf();
    return {file, withoutMark()};
}

NewFile::NewFile(const std::string& file)
{
    std::error_code error;
    const std::filesystem::path existing = std::filesystem::canonical(file, error);
    m_file = error ? file : existing.string();
    m_draft = std::filesystem::is_other(m_file, error) ? m_file : m_file + ".part";
    m_stream.open(m_draft, std::ios::binary | std::ios::trunc);
}

NewFile::~NewFile()
{
    if (m_draft != m_file)
        std::remove(m_draft.c_str());
}

bool NewFile::Finish()
{
    m_stream.close();
    return m_stream && (m_draft == m_file || std::rename(m_draft.c_str(), m_file.c_str()) == 0);
}

void WriteFile(const std::string& file, const std::string& text)
{
    NewFile written(file);
    written.Stream() << text << std::flush;
    if (!written.Finish())
        throw Failure(Exit::Document, file + " can't be written: " + std::strerror(errno) +
                                          ". Name another place, or look at who may write there");
}

} // namespace client
