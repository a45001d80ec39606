// Writes what is installed of the documents: their schemas, and the fields for the man page.
//
//   write-schemas FOLDER

#include "documents/Models.h"
#include "documents/Schemas.h"

#include <fstream>
#include <iostream>

namespace
{

bool Write(const std::string& file, const std::string& text)
{
    std::ofstream stream(file);
    stream << text << std::flush;
    return stream.good();
}

bool WriteAll(const std::string& folder, const client::DocumentModel& model, std::string& page)
{
    page += ManPageTable(model);
    return Write(folder + "/" + model.name + ".xsd", XmlSchema(model)) &&
           Write(folder + "/" + model.name + ".schema.json", JsonSchema(model).dump(2) + "\n");
}

} // namespace

int main(int, char** argv)
{
    const std::string folder = argv[1];
    std::string page;
    bool done = true;
    for (const client::DocumentModel& model : client::BehaviorModels())
        done = done && WriteAll(folder, model, page);
    done = done && WriteAll(folder, client::SceneModel(), page) && Write(folder + "/fields.man", page);
    if (!done)
        std::cerr << "write-schemas: " << folder << " can't be written\n";
    return done ? 0 : 1;
}
