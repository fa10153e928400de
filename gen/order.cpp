#include "order.h"

#include <algorithm>
#include <set>

#include "exceptions.h"

namespace {

constexpr int kTrailStep = 10;

/// Visits types depth first.
class Ordering {
  public:
    Ordering(Module& module, Errors& errors) : module_(module), errors_(errors) {}

    void visit(Type& type) {
        if (type.module != &module_ || !done_.insert(&type).second) return;
        open_.push_back({&type, false});
        for (const Member* member : allMembers(type)) follow(*member->type);
        if (type.element != nullptr) follow(*type.element);
        if (type.target != nullptr) follow(*type.target);
        open_.pop_back();
        if (type.hasFunctions && hasValue(type)) module_.ordered.push_back(&type);
    }

  private:
    struct Open {
        const Type* type;
        bool byPointer;  // holds the one that is being visited
    };

    void follow(Type& used) {
        const Type& user = *open_.back().type;
        open_.back().byPointer = kindRow(user.kind).pointsToMembers;
        const auto back = std::find_if(open_.begin(), open_.end(),
                                       [&](const Open& open) { return open.type == &used; });
        if (back == open_.end())
            visit(used);
        else
            recursion(used, std::none_of(back, open_.end(),
                                         [](const Open& open) { return open.byPointer; }));
    }

    void recursion(Type& type, bool holdsItself) {
        const auto refuse = [&](const char* text) {
            errors_.add(module_.source, type.line, type.path, text);
        };
        if (holdsItself) return refuse("the type contains itself");
        if (type.target != nullptr)
            return refuse("recursion through another name is not supported");
        if (!type.recursive) module_.forward.push_back(&type);
        type.recursive = true;
    }

    Module& module_;
    Errors& errors_;
    std::set<const Type*> done_;
    std::vector<Open> open_;
};

/// A decoder logs if the array of a list cannot be allocated, or if unknown content of a CHOICE
/// cannot be read.
bool logs(const Type& type) {
    return type.kind == Kind::sequenceOf || (type.kind == Kind::choice && type.keepsUnknown);
}

}  // namespace

void checkOtherNames(const Model& model, Errors& errors) {
    for (const Module& module : model.modules)
        for (const Type* type : module.named) {
            std::set<const Type*> names;
            const Type* other = type;
            while (other != nullptr && names.insert(other).second) other = other->target;
            if (other == type)
                errors.add(module.source, type->line, type->path, "the type contains itself");
        }
}

void checkImportOrder(const Model& model, Errors& errors) {
    std::set<const Module*> done;
    const auto ready = [&](const Module& module) {
        return std::all_of(module.imports.begin(), module.imports.end(),
                           [&](const Module* import) { return done.count(import) != 0; });
    };
    for (size_t before = SIZE_MAX; before != done.size();) {
        before = done.size();
        for (const Module& module : model.modules)
            if (ready(module)) done.insert(&module);
    }
    for (const Module& module : model.modules)
        if (done.count(&module) == 0)
            return errors.add(module.source, 1, module.name,
                              "modules import from each other in a circle");
}

void orderTypes(Module& module, Errors& errors) {
    Ordering ordering(module, errors);
    for (Type* type : module.named) ordering.visit(*type);
}

void numberTrailLines(Module& module, Errors& errors) {
    std::vector<Type*> logging;
    for (Type* type : module.ordered)
        if (logs(*type)) logging.push_back(type);
    int first = kTrailStep;
    for (const TrailException& exception : kTrailExceptions) {
        if (exception.module != module.stem) continue;
        const auto fixed = std::find_if(logging.begin(), logging.end(), [&](const Type* type) {
            return type->path == exception.type;
        });
        if (fixed == logging.end())
            return errors.add(module.source, 1, std::string(exception.type),
                              "the trail exception matches no type that logs");
        first = exception.line - kTrailStep * static_cast<int>(fixed - logging.begin());
    }
    for (size_t i = 0; i < logging.size(); ++i)
        logging[i]->trailLine = first + kTrailStep * static_cast<int>(i);
}
