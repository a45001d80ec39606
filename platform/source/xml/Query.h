#pragma once

#include "xml/Path.h"

#include <libxml/tree.h>
#include <libxml/xpath.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace analytics
{
class DocumentNode;
}

namespace analytics::xml
{

class Tree;

// A path query, ready to be evaluated on any document.
class Query
{
  public:
    explicit Query(const std::string& text);

    // One that is kept for its next use. All threads share the plain paths; what libxml2 compiled is kept
    // by each thread, since evaluation writes into it. Valid until the thread asks for another.
    static const Query& Get(const std::string& text);

    // Shows what matches, elements, attributes and texts, in document order until `visit` returns false. It
    // may not change the tree.
    void ForEach(Tree& tree, xmlNode* context, const Path::Visit& visit) const;

  private:
    struct Deleter
    {
        void operator()(xmlXPathCompExpr* expression) const { xmlXPathFreeCompExpr(expression); }
    };
    using Expression = std::unique_ptr<xmlXPathCompExpr, Deleter>;
    static Expression Compile(const std::string& text);
    std::vector<xmlNode*> Evaluate(Tree& tree, xmlNode* context) const;

    std::optional<Path> m_path; // in the place of the expression, where the text is that plain
    Expression m_expression;    // null if the text is malformed
};

// What the query selects from `context`, or from the document where that is null; nothing without a tree.
void ForEach(Tree* tree, const std::string& query, const DocumentNode* context, const Path::Visit& visit);

} // namespace analytics::xml
