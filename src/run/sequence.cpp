#include "run/sequence.h"

#include <utility>

#include "daemonconf/kfxconf.h"
#include "model/lookups.h"
#include "model/vocabulary.h"
#include "xml/encoding.h"
#include "xml/rvt_xml_writer.h"
#include "xml/walk.h"

// Whether the map can hold a new cache: values can hold what its encoding lacks, a comment or a
// name cannot.
Outcome Sequence::FitsCache(const RVT_Node& cache) const {
    const RVT_XML_Tree& map = std::as_const(inventory_).Tree();
    if (IsUtf8(EncodingOf(map))) {
        return {};
    }
    RVT_XML_Tree alone;
    alone.AddChild(Children(map).First()->Copy());
    alone.AddChild(cache.Copy());
    const Result<bool> fits = FitsItsEncoding(alone);
    return !fits.ok() || *fits
               ? fits.outcome()
               : Failure(ExitCode::kWriteFailed, "Cannot write to \"%s.tmp\".", map_.c_str());
}

Outcome Sequence::Change(const Command& command, std::string_view document,
                         const std::string& name) {
    if (command.action != Action::kUpdateCache) {
        return Execute(command, inventory_);
    }
    RVT_XML_Tree document_tree;
    const Result<bool> is_whole = ParseXMLText(document, name, document_tree);
    return is_whole.ok() ? Execute(command, inventory_, document_tree,
                                   [this](const RVT_Node& cache) { return FitsCache(cache); })
                         : is_whole.outcome();
}

// The first element that kfx.conf can have no line of, or null.
static RVT_Node* FirstIncomplete(const RVT_Node& map) {
    for (RVT_Node& node : LiveElements(map, tag::Platform, tag::Console)) {
        if (!GetKfxConfData(ElementOf(node, nullptr)).ok()) {
            return &node;
        }
    }
    return nullptr;
}

// No command makes an element that is incomplete, so the first one stays it until it is removed.
Outcome Sequence::HasKfxConf() {
    const Result<RVT_Node*> map = inventory_.NeedSystemMap(ExitCode::kIncompleteMap);
    if (is_complete_ || !map.ok()) {
        return map.outcome();
    }
    if (incomplete_ == nullptr || !incomplete_->IsType(RVT_ELEMENT)) {
        incomplete_ = FirstIncomplete(**map);
        is_complete_ = incomplete_ == nullptr;
    }
    return is_complete_ ? Outcome() : GetKfxConfData(ElementOf(*incomplete_, nullptr)).outcome();
}

Outcome Sequence::Do(const Command& command, std::string_view document, const std::string& name) {
    makes_kfxconf_ = false;
    if (Outcome outcome = Change(command, document, name); !outcome.ok()) {
        return outcome;
    }
    const Follow& follow = RowOf(command.action).follow;
    if (follow.map) {
        changes_.map = true;
        inventory_.Settle();
    }
    makes_kfxconf_ = follow.kfxconf;
    if (!makes_kfxconf_) {
        return {};
    }
    changes_.kfxconf = true;
    return HasKfxConf();
}
