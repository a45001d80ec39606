#pragma once

#include "Values.h"
#include "documents/Compare.h"
#include "documents/Finding.h"
#include "documents/Frame.h"
#include "documents/Model.h"

#include <fstream>
#include <string>

namespace client
{

// A document as a person gave it, and what messages call it.
struct Source
{
    std::string name;
    std::string text;
};

// Opens a file to read it. `why` says why that isn't possible, and stays as it is otherwise.
std::ifstream OpenFile(const std::string& file, std::string& why);
// The whole of a file without a byte order mark; "-" is standard input. Throws Failure.
Source ReadSource(const std::string& file);
// A file that takes the place of another one as a whole. A pipe or a device is written as it is. Links are
// followed.
class NewFile
{
  public:
    explicit NewFile(const std::string& file);
    // Removes what is unfinished.
    ~NewFile();
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    std::ofstream& Stream() { return m_stream; }
    // Puts the file into its place. Returns false, with the reason in errno, if it can't be written.
    bool Finish();

  private:
    std::string m_file;
    std::string m_draft;
    std::ofstream m_stream;
};

// Replaces the file as a whole, or leaves it alone. Throws Failure.
void WriteFile(const std::string& file, const std::string& text);

// How documents are checked before they are sent.
struct Checking
{
    Frame frame;
    bool strict = false; // warnings refuse as well
    bool force = false;  // errors don't
    bool json = false;   // findings as JSON
};

// What the document says it is of, in either form. Throws Failure if nothing that is known.
const DocumentModel& ModelFor(const Source& source);
// The document as XML, whichever of its two forms the text has; JSON may be what `get --json` wrote.
// Throws Failure if it is neither. `findings` gets what its form makes of it, when it is JSON.
std::string AsXml(const Source& source, const DocumentModel& model, Findings& findings);
// All that is wrong with the document in either form. Throws Failure if it is neither.
Findings FindingsOf(const Source& source, const DocumentModel& model, const Frame& frame);
// A line on standard error for each finding.
void Tell(const Source& source, const Findings& findings, bool json);
// Throws Failure if the findings forbid sending the document.
void Judge(const Source& source, const Findings& findings, const Checking& checking);

// Checks the document, reports the findings, and returns it as XML. Without a model only checks that it is
// XML.
std::string Checked(const Source& source, const DocumentModel* model, const Checking& checking);

// What the service stored differently; nothing if the stored document is empty, as that of an idle one is.
std::vector<Change> ChangesIn(const DocumentModel* model, const std::string& sent, const std::string& stored);
List Listed(const std::vector<Change>& changes);

} // namespace client
