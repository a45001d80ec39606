#pragma once

#include <pugixml.hpp>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The one way in for XML that others wrote. Expat judges the text: it has to be well-formed XML 1.0 with
// namespaces, in UTF-8 whatever it declares, with nothing in it that can grow. What has passed is read into a
// tree by pugixml. Nothing is opened or printed. Each function throws std::bad_alloc without memory, and may
// be called from any thread.
namespace analytics::xml
{

// Why a text is refused.
struct SyntaxError
{
    int line = 0;       // counted from 1; 0 if it concerns the text as a whole
    std::string reason; // a phrase for a person, without a full stop at its end
    int column = 0;     // in characters, counted from 1; 0 if the line is 0
};

// What a document type declaration may hold: the name alone, or also that of a file, which is passed over
// (<!DOCTYPE a SYSTEM "a.dtd">).
enum class Doctype
{
    NameAlone,
    NamesFile
};

// What was seen in a text that passed.
struct Survey
{
    std::size_t elements = 0;
    bool sections = false;    // there are CDATA sections
    bool innerSpaces = false; // elements below the root declare namespaces
};

// Judges the text alone, at about a third of the cost of Read() and without memory that grows with it.
// Nothing, and `error` filled, if it is refused. That goes beyond what isn't well-formed: 64 MiB, 256 levels
// of elements and 256 attributes an element are the most.
std::optional<Survey> Check(std::string_view text, SyntaxError& error, Doctype doctype = Doctype::NameAlone);

// Reads a text that has passed into `tree`: elements, texts with all their white space (CDATA sections too),
// comments, processing instructions and the document type, but no XML declaration. With `embed` a text that
// an element begins with is the value of the element and no node: half the nodes of most documents. False if
// pugixml refuses what expat has let pass.
bool Build(std::string_view text, const Survey& survey, pugi::xml_document& tree, bool embed = false);

// Both.
bool Read(std::string_view text, pugi::xml_document& tree, SyntaxError& error,
          Doctype doctype = Doctype::NameAlone);

// All text below the node.
std::string Content(pugi::xml_node node);

// Shows `top` and all nodes below it in document order until `visit` returns false. It may not add or remove
// nodes.
template <class Visit>
void ForEachNode(pugi::xml_node top, Visit visit)
{
    struct Walker : pugi::xml_tree_walker
    {
        explicit Walker(Visit& visitor) : m_visit(visitor) {}
        bool begin(pugi::xml_node& node) override { return m_visit(node); }
        bool for_each(pugi::xml_node& node) override { return m_visit(node); }
        Visit& m_visit;
    };
    Walker walker(visit);
    top.traverse(walker);
}

// The lines in which the nodes of a tree stand that Read() has read from `text` and nobody has changed.
class Lines
{
  public:
    explicit Lines(std::string_view text);
    int Of(pugi::xml_node node) const; // counted from 1; 0 for null

  private:
    std::vector<std::ptrdiff_t> m_ends;
};

} // namespace analytics::xml
