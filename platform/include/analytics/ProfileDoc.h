#pragma once

#include <analytics/Document.h>
#include <analytics/Point.h>

#include <string>
#include <vector>

namespace analytics
{

// A document in engine form: rules and engine modules with their items and shapes, all in the namespace
// that the document binds to Settings::OnvifPrefix(). A context is the handle of a rule or an engine
// module unless said otherwise; null is the whole document.
class ProfileDoc : public Document
{
  public:
    ProfileDoc();
    ~ProfileDoc() override;

    // The Rule elements whose Type is `ruleId`, in document order. The caller owns the handles.
    std::vector<DocumentNode*> SelectRules(const std::string& ruleId);
    DocumentNode* SelectRule(const std::string& ruleId); // the first one, or null
    void DeleteRules(const std::string& ruleId);
    // Whether the document marks rules of this type as active, also if it holds none.
    bool RuleIsActive(const std::string& ruleId);
    // The AnalyticsModule element whose Type is `engineId`; null if there is none.
    DocumentNode* SelectEngine(const std::string& engineId);

    // The path to the items of a rule or an engine module, for predicates or further steps behind it.
    // `inParameters` true: the items that stand directly in Parameters, from a rule or engine module or
    // from the document root. False: the items directly below a context such as an ElementItem.
    std::string ElementItemQry(bool inParameters);
    std::string SimpleItemQry(bool inParameters);
    DocumentNode* SelectElementItemNode(DocumentNode* context, bool inParameters); // the first, or null

    // The first SimpleItem of that name, as SimpleItemQry() finds it.
    int GetSimpleItemValue(const std::string& name, int defaultValue, DocumentNode* context,
                           bool inParameters);
    void SetSimpleItemValue(const std::string& name, int value, DocumentNode* context);

    // Appends a point for each match, from its attributes x and y, 0 where one is absent.
    void GetPoints(std::vector<types::Point>& points, const std::string& query, DocumentNode* context);
    // The first two matches; false leaves `line` alone when there are fewer.
    bool GetLine(types::Point (&line)[2], const std::string& query, DocumentNode* context);
};

} // namespace analytics
