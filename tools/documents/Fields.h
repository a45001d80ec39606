#pragma once

#include "documents/Meanings.h"
#include "documents/Model.h"

#include <string>
#include <vector>

namespace client
{

// A field of a document as it is explained: a value, a list of zones, or two points.
struct DocumentField
{
    std::string path; // as in "rois/dwellTime", in the JSON form
    std::string name; // the last word of the path
    std::string type; // "integer", "flag", "text", "points" or "box"
    const Meaning* meaning;
    std::optional<Bounds> bounds; // advised; of points how many
    std::vector<std::string> choices;
    std::string value; // if missing
    bool readOnly;     // the service's own
};

// In the order of the document; constants left out.
std::vector<DocumentField> FieldsOf(const DocumentModel& model);

} // namespace client
