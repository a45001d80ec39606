#pragma once

#include "documents/Compare.h"
#include "documents/DocumentJson.h"
#include "documents/Finding.h"
#include "documents/Frame.h"

namespace client
{

class Service;

// A behavior or the scene of a profile, as the page works on it.
class DocumentPage
{
  public:
    // `behavior` is an identifier, or "scene". Throws Failure if this program doesn't know the behavior.
    DocumentPage(Service& service, int profile, const std::string& behavior);

    // The document in its JSON form, and what a form needs to know of it: "model", "zone", "points".
    Json Read();
    // What would change, and the findings.
    Json Review(const Json& base, const Json& document, const Frame& frame) const;
    // Stores what differs from what the service has, and reports what it changed. Throws ChangedMeanwhile if
    // the service's document differs from `base`, Failure if the document has an error.
    Json Save(const Json& base, const Json& document, const Frame& frame);

  private:
    Json Current();
    // Empty for one that is idle.
    std::string StoredBehavior();
    void Store(const std::string& document);

    Service& m_service;
    int m_profile;
    const DocumentModel& m_model;
};

// The findings of a document that the page has made.
Json FindingsOf(const DocumentModel& model, const Json& document, const Frame& frame);
// The model of a behavior, or of "scene". Throws Failure.
const DocumentModel& ModelOf(const std::string& behavior);

// Somebody else has stored another document.
struct ChangedMeanwhile
{
    Json answer;
};

} // namespace client
