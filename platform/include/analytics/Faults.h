#pragma once

#include <stdexcept>

namespace analytics
{

// What the client got wrong. The text is a sentence that a client can act on; it goes to the client
// as the fault string, as it stands.
class ClientFault : public std::runtime_error
{
  public:
    using std::runtime_error::runtime_error;
    ~ClientFault() override;
};

// What failed on the camera: the store can't be written, a file is damaged. Same use of the text.
class AnalyticsFault : public std::runtime_error
{
  public:
    using std::runtime_error::runtime_error;
    ~AnalyticsFault() override;
};

} // namespace analytics
