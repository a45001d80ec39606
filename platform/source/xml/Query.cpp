#include "xml/Query.h"

#include "threads/Lock.h"
#include "xml/Memory.h"
#include "xml/Tree.h"

#include <libxml/xpathInternals.h>

#include <algorithm>
#include <string_view>
#include <unordered_map>

namespace analytics::xml
{
namespace
{
constexpr std::size_t kMaxKept = 512;

// A plain path is only read when it is walked: all threads share those that come first, which stay. Null
// for other queries.
const std::pair<const std::string, Query>* Shared(const std::string& text)
{
    static analytics::platform::Lock lock;
    static std::unordered_map<std::string, Query> paths;
    const analytics::platform::Hold hold(lock);
    const auto found = paths.find(text);
    if (found != paths.end())
        return &*found;
    if (paths.size() >= kMaxKept || !Path::Read(text))
        return nullptr;
    return &*paths.emplace(text, Query(text)).first;
}

void Ignore(void*, xmlErrorPtr) {}
void Quiet(void*, const char*, ...) {}

// The library tells of unknown functions past the error handler, by the printing function of the thread.
class Silence
{
  public:
    Silence() : m_print(xmlGenericError), m_context(xmlGenericErrorContext)
    {
        xmlSetGenericErrorFunc(nullptr, Quiet);
    }
    ~Silence() { xmlSetGenericErrorFunc(m_context, m_print); }
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;

  private:
    xmlGenericErrorFunc m_print;
    void* m_context;
};
} // namespace

Query::Query(const std::string& text)
    : m_path(Path::Read(text)), m_expression(m_path ? nullptr : Compile(text))
{
}

const Query& Query::Get(const std::string& text)
{
    thread_local std::unordered_map<std::string_view, const Query*> known; // of the shared ones
    if (const auto found = known.find(text); found != known.end())
        return *found->second;
    thread_local std::unordered_map<std::string, Query> own;
    if (const auto found = own.find(text); found != own.end())
        return found->second;
    if (const auto* const shared = Shared(text))
        return *known.emplace(shared->first, &shared->second).first->second;
    if (own.size() >= kMaxKept)
        own.clear();
    return own.emplace(text, Query(text)).first->second;
}

Query::Expression Query::Compile(const std::string& text)
{
    const std::unique_ptr<xmlXPathContext, decltype(&xmlXPathFreeContext)> context(
        xmlXPathNewContext(nullptr), xmlXPathFreeContext);
    RequireMemory();
    context->error = Ignore;
    Expression expression(xmlXPathCtxtCompile(context.get(), Chars(text)));
    RequireMemory();
    return expression;
}

void Query::ForEach(Tree& tree, xmlNode* context, const Path::Visit& visit) const
{
    if (m_path)
        return m_path->ForEach(tree, context, visit);
    const std::vector<xmlNode*> matches = Evaluate(tree, context);
    static_cast<void>(std::all_of(matches.begin(), matches.end(), visit));
}

std::vector<xmlNode*> Query::Evaluate(Tree& tree, xmlNode* context) const
{
    std::vector<xmlNode*> matches;
    if (m_expression == nullptr)
        return matches;
    const Silence silence;
    xmlXPathContext& queries = tree.Queries();
    queries.node = context;
    const std::unique_ptr<xmlXPathObject, decltype(&xmlXPathFreeObject)> result(
        xmlXPathCompiledEval(m_expression.get(), &queries), xmlXPathFreeObject);
    RequireMemory();
    // An expression that isn't a path has no nodes; those of the namespace axis end with the result.
    if (result != nullptr && result->type == XPATH_NODESET && result->nodesetval != nullptr)
        for (int i = 0; i < result->nodesetval->nodeNr; ++i)
            if (result->nodesetval->nodeTab[i]->type != XML_NAMESPACE_DECL)
                matches.push_back(result->nodesetval->nodeTab[i]);
    return matches;
}

void ForEach(Tree* tree, const std::string& query, const DocumentNode* context, const Path::Visit& visit)
{
    xmlNode* start = tree == nullptr ? nullptr : context == nullptr ? tree->Top() : NodeOf(context);
    if (start != nullptr)
        Query::Get(query).ForEach(*tree, start, visit);
}

} // namespace analytics::xml
