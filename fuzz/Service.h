#pragma once

#include "Installation.h"

#include "../source/SoapIOImpl.h"

#include <string>

namespace fuzzing
{

// The service without a server: requests as text, on a store that holds one profile with every
// delivered behavior and a scene, which is the active one, and one without any.
class Service
{
  public:
    Service();
    ~Service();

    // Back to the store as it was at first.
    void Reset();
    // All that the service writes on a connection where `request` came in. Its socket must be deleted.
    std::string Answer(const std::string& request);

  private:
    void Fill();
    std::string Stamp() const; // of the store's files

    Installation m_installation;
    analytics::kestrile::SoapIO::SoapIOImpl m_transport;
    std::string m_template; // a folder with the files of the store
    std::string m_untouched;
};

} // namespace fuzzing
