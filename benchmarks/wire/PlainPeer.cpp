// The plain gSOAP server: worker threads share the listening socket, and each accepts and serves one
// connection after the other.
//
//   plain-peer FOLDER WORKERS kept|fresh [STORED]
//
// Each worker keeps its context of the runtime, or takes a fresh one for each connection, as a server has to
// that can be called on any thread.
//
// GetProfileList reads five rows with a statement that the worker keeps. SetProfileBehavior parses the
// client's document with libxml2 and commits the text of the file STORED, one transaction each. What the
// eight digits after "Vary " in the client's document are, they become in the stored text.

#include "PeerStore.h"
#include "Port.h"

#include <libxml/parser.h>
#include <soapH.h>

#include <VideoAnalytics.nsmap>

#include <cstdlib>
#include <fstream>
#include <memory>
#include <sstream>
#include <thread>
#include <utility>
#include <vector>

namespace
{

constexpr int kBacklog = 128;
constexpr char kVary[] = "Vary ";
constexpr std::size_t kDigits = 8;

struct Worker
{
    peer::Reader reader;
    peer::Writer& writer;
    const std::string& stored;
};

Worker& WorkerOf(soap* context) { return *static_cast<Worker*>(context->user); }

std::string StoredFor(const std::string& config, std::string stored)
{
    const std::size_t from = config.find(kVary);
    const std::size_t to = stored.find(kVary);
    if (from != std::string::npos && to != std::string::npos)
        stored.replace(to, sizeof kVary - 1 + kDigits, config, from, sizeof kVary - 1 + kDigits);
    return stored;
}

void ServeOne(soap* context)
{
    soap_serve(context);
    soap_destroy(context);
    soap_end(context);
}

void ServeFresh(soap* context)
{
    while (soap_valid_socket(soap_accept(context)))
    {
        soap* const fresh = soap_new1(SOAP_C_UTFSTRING);
        fresh->user = context->user;
        fresh->socket = std::exchange(context->socket, SOAP_INVALID_SOCKET);
        ServeOne(fresh);
        soap_free(fresh);
    }
}

void Serve(soap* context)
{
    while (soap_valid_socket(soap_accept(context)))
        ServeOne(context);
}

std::string ReadAll(const char* file)
{
    std::ostringstream text;
    text << std::ifstream(file).rdbuf();
    return text.str();
}

} // namespace

int __VideoAnalytics__GetProfileList(soap* context, _VideoAnalytics__GetProfileList* /*request*/,
                                     _VideoAnalytics__GetProfileListResponse* response)
{
    response->profileList = soap_new_VideoAnalytics__ProfileList(context, -1);
    WorkerOf(context).reader.Each(
        [&](const peer::Row& row)
        {
            auto* const summary = soap_new_VideoAnalytics__ProfileSummary(context, -1);
            summary->id = row.id;
            summary->__item = row.name;
            response->profileList->profile.push_back(summary);
        });
    return SOAP_OK;
}

int __VideoAnalytics__SetProfileBehavior(soap* context, _VideoAnalytics__SetProfileBehavior* request,
                                         _VideoAnalytics__SetProfileBehaviorResponse* /*response*/)
{
    const std::string& config = request->config;
    xmlDoc* const document =
        xmlReadMemory(config.data(), static_cast<int>(config.size()), nullptr, nullptr, XML_PARSE_NONET);
    if (document == nullptr)
        return soap_sender_fault(context, "The behavior document could not be read", nullptr);
    xmlFreeDoc(document);
    Worker& worker = WorkerOf(context);
    worker.writer.Put(request->profileId, request->behaviorId, StoredFor(config, worker.stored));
    return SOAP_OK;
}

int main(int argc, char** argv)
{
    const std::string contexts = argc > 3 ? argv[3] : "";
    if (contexts != "kept" && contexts != "fresh")
        return std::fprintf(stderr, "plain-peer FOLDER WORKERS kept|fresh [STORED]\n"), 2;
    const std::string file = std::string(argv[1]) + "/peer.db";
    const std::string stored = argc > 4 ? ReadAll(argv[4]) : std::string();
    xmlInitParser();
    peer::Prepare(file);
    peer::Writer writer(file);
    soap* const master = soap_new1(SOAP_C_UTFSTRING);
    master->bind_flags = SO_REUSEADDR;
    if (!soap_valid_socket(soap_bind(master, "127.0.0.1", 0, kBacklog)))
        return soap_print_fault(master, stderr), 1;
    std::vector<std::unique_ptr<Worker>> workers;
    std::vector<std::thread> threads;
    for (int i = std::atoi(argv[2]); i > 0; --i)
    {
        workers.push_back(std::unique_ptr<Worker>(new Worker{peer::Reader(file), writer, stored}));
        soap* const context = soap_copy(master);
        context->user = workers.back().get();
        threads.emplace_back(contexts == "fresh" ? ServeFresh : Serve, context);
    }
    SayPort(master->master);
    for (std::thread& thread : threads)
        thread.join();
}
