#pragma once

#include "documents/Finding.h"

#include <stdexcept>
#include <string>

namespace client
{

// What the program's exit says.
enum class Exit
{
    Done = 0,
    Refused = 1,     // the service answered with a fault; of several hosts, not all could be done
    Usage = 2,       // the command line is wrong
    Unreachable = 3, // there was no answer: connection, certificate, time, access
    Document = 4,    // a file or a document can't be used, or --strict met a warning
    Differs = 5      // nothing went wrong, and a host differs: of a plan that was asked for --exit-code
};

// Ends a command. The text is a sentence for a person: what was wrong, and what to do.
class Failure : public std::runtime_error
{
  public:
    Failure(Exit code, const std::string& sentence) : std::runtime_error(sentence), m_code(code) {}

    Exit Code() const { return m_code; }

  private:
    Exit m_code;
};

// A file or a document can't be used. Holds the place, for machine-readable output.
class DocumentFailure : public Failure
{
  public:
    // `line` 0: it concerns the file as a whole. `why` is a sentence without a full stop.
    DocumentFailure(const std::string& file, long line, const std::string& why)
        : Failure(Exit::Document, file + (line > 0 ? ":" + std::to_string(line) : "") + ": " + why),
          m_file(file),
          m_finding{Finding::Level::Error, line, "", why}
    {
    }

    const std::string& File() const { return m_file; }
    const Finding& AsFinding() const { return m_finding; }

  private:
    std::string m_file;
    Finding m_finding;
};

// The service closed the connection without an answer, which is how it says that a profile has no scene.
class NoAnswer : public Failure
{
  public:
    explicit NoAnswer(const std::string& sentence) : Failure(Exit::Unreachable, sentence) {}
};

} // namespace client
