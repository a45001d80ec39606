#include <SoapRequest.h>

#include <analytics/Faults.h>
#include <analytics/ProfileManager.h>

#include <stdsoap2.h>

#include <exception>

namespace analyticsapi
{
namespace
{
constexpr char kException[] = "An exception occurred";
} // namespace

std::atomic<analytics::ProfileManager*> SoapRequest::m_profileManager{nullptr};

SoapRequest::SoapRequest(const char* name, soap* soap) : m_soap(soap), m_name(name) {}

SoapRequest::~SoapRequest() = default;

int SoapRequest::Execute()
{
    // The one place where exceptions become faults. gSOAP copies the texts into the context.
    try
    {
        return DoExecute();
    }
    catch (analytics::ClientFault& e)
    {
        return soap_sender_fault(m_soap, e.what(), nullptr);
    }
    catch (analytics::AnalyticsFault& e)
    {
        return soap_receiver_fault(m_soap, e.what(), nullptr);
    }
    catch (std::exception& e)
    {
        return soap_receiver_fault(m_soap, kException, e.what());
    }
    catch (...)
    {
        return soap_receiver_fault(m_soap, kException, "Unknown exception");
    }
}

analytics::ProfileManager* SoapRequest::GetProfileManager()
{
    if (m_profileManager == nullptr)
        m_profileManager = new analytics::ProfileManager;
    return m_profileManager;
}

bool SoapRequest::Shutdown()
{
    delete m_profileManager.exchange(nullptr);
    return true;
}

} // namespace analyticsapi
