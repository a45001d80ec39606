#pragma once

#include <libxml/tree.h>
#include <libxml/xpath.h>

#include <memory>
#include <string>
#include <vector>

namespace analytics::xml
{

class Tree;

// A path query, ready to be evaluated on any document.
class Query
{
  public:
    explicit Query(const std::string& text);

    // One that is kept for its next use. Each thread keeps its own: evaluation writes into what was
    // compiled. Valid until the thread asks for another.
    static const Query& Get(const std::string& text);

    // What matches, in document order: elements, attributes, texts.
    std::vector<xmlNode*> Select(Tree& tree, xmlNode* context) const;

  private:
    struct Deleter
    {
        void operator()(xmlXPathCompExpr* expression) const { xmlXPathFreeCompExpr(expression); }
    };
    using Expression = std::unique_ptr<xmlXPathCompExpr, Deleter>;
    static Expression Compile(const std::string& text);

    Expression m_expression; // null if the text is malformed
};

} // namespace analytics::xml
