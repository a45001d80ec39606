#pragma once

#include "Values.h"
#include "documents/Model.h"

#include <string>

namespace client
{

// Standard output, in the form that was asked for.
class Output
{
  public:
    explicit Output(bool json) : m_json(json) {}

    // People get the table, or the sentence if there are no rows; programs an array of objects.
    void Table(const List& list, const std::string& none) const;
    // People get the sentence, programs an object.
    void Result(const Record& record, const std::string& sentence) const;
    // People get the sentence and the table under it, programs an object with the list under `key`.
    void Report(Record record, const std::string& sentence, const std::string& key, const List& list) const;
    // People get the document in lines, programs an object with its JSON form under "document": null if it
    // is empty, and the text itself of one that has no model.
    void Document(Record record, const DocumentModel* model, const std::string& document) const;

  private:
    bool m_json;
};

// A document as a person edits it, one element a line; text that isn't XML is left as it is.
std::string Readable(const std::string& document);

} // namespace client
