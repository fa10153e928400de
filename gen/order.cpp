#include "order.h"

#include <algorithm>
#include <set>

#include "exceptions.h"

namespace {

constexpr int kTrailStep = 10;

/// The types that a type has members of, points to or is another name for.
std::vector<Type*> usedBy(const Type& type) {
    std::vector<Type*> used;
    for (const Member* member : allMembers(type)) used.push_back(member->type);
    if (type.element != nullptr) used.push_back(type.element);
    if (type.target != nullptr) used.push_back(type.target);
    return used;
}

/// A structure can be pointed to before it is defined; another name cannot.
bool isStructure(const Type& type) {
    return type.target == nullptr && kindRow(type.kind).cppType.empty();
}

/// Visits the types of a module depth first: each type after all that it uses, except for those
/// that lead back to it, which are marked as recursive.
class Visit {
  public:
    explicit Visit(const Module& module) : module_(module) {}

    void operator()(Type& type) {
        if (type.module != &module_ || !hasValue(type)) return;
        if (open_.count(&type) != 0) type.recursive = true;
        if (!known_.insert(&type).second) return;
        open_.insert(&type);
        for (Type* used : usedBy(type)) (*this)(*used);
        open_.erase(&type);
        visited.push_back(&type);
    }

    std::vector<Type*> visited;

  private:
    const Module& module_;
    std::set<const Type*> known_;
    std::set<const Type*> open_;
};

/// Puts types in the order in which C++ can define them: after those that they hold, and after
/// other names that they use.
class Placing {
  public:
    Placing(Module& module, Errors& errors) : module_(module), errors_(errors) {}

    void place(Type& type) {
        if (type.module != &module_ || !hasValue(type) || !known_.insert(&type).second) return;
        const bool pointsTo = kindRow(type.kind).pointsToMembers;
        open_.push_back({&type, pointsTo});
        for (Type* used : usedBy(type))
            if (!pointsTo || !isStructure(*used)) follow(type, *used);
        open_.pop_back();
        if (type.hasFunctions) module_.ordered.push_back(&type);
    }

  private:
    struct Open {
        const Type* type;
        bool pointsTo;  // the type that is being placed, instead of holding it
    };

    void follow(const Type& user, Type& used) {
        const auto back = std::find_if(open_.begin(), open_.end(),
                                       [&](const Open& open) { return open.type == &used; });
        if (back == open_.end()) return place(used);
        if (std::none_of(back, open_.end(), [](const Open& open) { return open.pointsTo; }))
            errors_.add(module_.source, used.line, used.path, "the type contains itself");
        else
            errors_.add(module_.source, user.line, user.path,
                        "recursion through another name is not supported");
    }

    Module& module_;
    Errors& errors_;
    std::set<const Type*> known_;
    std::vector<Open> open_;
};

/// The structures that are pointed to before they are defined.
std::vector<Type*> forwardDeclared(const Module& module) {
    std::set<const Type*> defined;
    std::vector<Type*> forward;
    for (const Type* type : module.ordered) {
        for (Type* used : usedBy(*type))
            if (used->module == &module && used->hasFunctions && hasValue(*used) && used != type &&
                defined.insert(used).second)
                forward.push_back(used);
        defined.insert(type);
    }
    return forward;
}

/// As designed, a decoder logs if the array of a list cannot be allocated, or if unknown content of
/// a CHOICE cannot be read.
bool logs(const Type& type) {
    if (type.published) return false;  // the run-time does
    return type.kind == Kind::sequenceOf || (type.kind == Kind::choice && type.keepsUnknown);
}

}  // namespace

void checkOtherNames(Model& model, Errors& errors) {
    for (const Module& module : model.modules)
        for (Type* type : module.named) {
            std::set<const Type*> names;
            const Type* other = type->target;
            while (other != nullptr && other != type && names.insert(other).second)
                other = other->target;
            if (other == nullptr || other != type) continue;
            errors.add(module.source, other->line, other->path, "the type contains itself");
            type->target = nullptr;  // so that a circle of names is reported once
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
    Visit visit(module);
    for (Type* type : module.named) visit(*type);
    Placing placing(module, errors);
    for (Type* type : visit.visited) placing.place(*type);
    module.forward = forwardDeclared(module);
}

void numberTrailLines(Module& module, Errors& errors) {
    std::vector<Type*> logging;
    for (Type* type : module.ordered)
        if (logs(*type)) logging.push_back(type);
    int first = kTrailStep;
    for (const TrailException& exception : kTrailExceptions) {
        if (exception.module != module.stem || module.set.published) continue;
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
