// Compares the modules of 2009 with another codec of X.691, Debian's erlang-asn1. The other codec
// encodes random values of every type; here they decode to the expected dump. If messages are cut,
// both decoders fail on the same ones.
//
//   crosscheck modules DIRECTORY FILE...           the modules that the other codec compiles
//   crosscheck values SEED COUNT FILE...           one Erlang term a line, to standard output
//   crosscheck compare SEED COUNT aligned|unaligned RESULTS FILE...

#include <fstream>
#include <functional>
#include <iostream>
#include <sstream>

#include "../types.h"
#include "later_modules.h"
#include "value_maker.h"

namespace {

std::string dumpText(const std::function<void(AsnDump&)>& print) {
    std::string text;
    AsnDumpSink sink{[](void* target, const char* part, size_t size) {
                         static_cast<std::string*>(target)->append(part, size);
                     },
                     &text};
    {
        AsnDump dump(sink, "P");
        print(dump);
    }
    return text;
}

/// What is made of one seed: the types in turn, a value of each.
class Values {
  public:
    Values(uint32_t seed, const std::vector<std::string>& files)
        : model_(resolve(laterModules(files), {"asn2009", true}, errors_)), maker_(seed) {
        for (const std::string& error : errors_.lines) throw std::runtime_error(error);
        for (const Module& module : model_.modules)
            for (const Type* type : module.named)
                if (hasValue(*type)) types_.push_back(type);
    }

    struct Value {
        const Type* type;
        std::string term;
        std::string dump;
    };
    Value next() {
        Value value{types_[next_++ % types_.size()], "", ""};
        value.dump = dumpText([&](AsnDump& dump) { value.term = maker_.make(*value.type, dump); });
        return value;
    }

  private:
    Errors errors_;
    Model model_;
    ValueMaker maker_;
    std::vector<const Type*> types_;
    size_t next_ = 0;
};

/// The dump of so many octets, or the status.
std::string decoded(const AsnTypeInfo& type, const Octets& octets, bool aligned) {
    const auto value = newValue(type);
    Decoding decoding(octets, aligned);
    const AsnStatus status = type.decode(decoding.ctx, value.get());
    if (status != kAsnOk) return std::to_string(status);
    return dumpText([&](AsnDump& dump) { type.print(dump, value.get()); });
}

/// The first line that differs.
std::string firstDifference(const std::string& expected, const std::string& found) {
    std::istringstream left(expected);
    std::istringstream right(found);
    std::string wanted;
    std::string got;
    do {
        if (!std::getline(left, wanted)) wanted = "nothing";
        if (!std::getline(right, got)) got = "nothing";
    } while (wanted == got);
    return "expected '" + wanted + "', decoded '" + got + "'";
}

void report(const Values::Value& value, const std::string& octets, const std::string& what) {
    static int reported = 0;
    if (++reported > 10) return;
    std::cout << value.type->path << ": " << what << "\n" << value.term << "\n" << octets << "\n";
}

/// The difference between a result and what is expected, or nothing.
///   cuts  for each number of octets, whether so many of them decode there; empty if not tried
std::string problemOf(const Values::Value& value, const Octets& octets, const std::string& cuts,
                      bool aligned) {
    const AsnTypeInfo& type = typeNamed(("asn2009::" + value.type->cppName).c_str());
    const std::string dump = decoded(type, octets, aligned);
    if (dump != value.dump) return firstDifference(value.dump, dump);
    for (size_t size = 0; size < cuts.size(); ++size) {
        const auto end = octets.begin() + static_cast<std::ptrdiff_t>(size);
        const std::string shorter = decoded(type, {octets.begin(), end}, aligned);
        if (shorter.starts_with("-") != (cuts[size] == '0'))
            return "cut to " + std::to_string(size) + " octets: " + firstDifference("", shorter);
    }
    return "";
}

int compare(Values& values, int count, bool aligned, const std::string& file) {
    std::ifstream results(file);
    std::string line;
    int compared = 0;
    int undecoded = 0;  // what the other codec encodes, but does not decode itself
    int different = 0;
    size_t cuts = 0;
    for (; compared < count && std::getline(results, line); ++compared) {
        const Values::Value value = values.next();
        std::istringstream words(line);
        std::string octets;
        std::string decodes;
        std::string cut;
        words >> octets >> decodes >> cut;
        undecoded += decodes == "0";
        if (decodes == "0") continue;
        cuts += cut.size();
        const std::string problem =
            octets == "-" ? "not encoded" : problemOf(value, hex(octets), cut, aligned);
        if (problem.empty()) continue;
        ++different;
        report(value, octets, problem);
    }
    std::cout << compared << " values, " << cuts << " cuts, " << different << " differences, "
              << undecoded << " that the other codec does not decode itself\n";
    return different == 0 && compared == count && undecoded * 100 < count ? 0 : 1;
}

int run(const std::vector<std::string>& words) {
    const auto from = [&](std::ptrdiff_t first) {
        return std::vector<std::string>(words.begin() + first, words.end());
    };
    if (words[0] == "modules") {
        for (const ModuleNotation& module : laterModules(from(2)))
            std::ofstream(words[1] + "/" + module.name + ".asn1") << moduleText(module);
        return 0;
    }
    const int count = std::stoi(words[2]);
    const bool comparing = words[0] == "compare";
    Values values(static_cast<uint32_t>(std::stoul(words[1])), from(comparing ? 5 : 3));
    if (comparing) return compare(values, count, words[3] == "aligned", words[4]);
    for (int i = 0; i < count; ++i) {
        const Values::Value value = values.next();
        std::cout << "{'" << value.type->module->name << "','" << value.type->path << "',"
                  << value.term << "}.\n";
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return run({argv + 1, argv + argc});
    } catch (const std::exception& error) {
        std::cerr << "crosscheck: " << error.what() << "\n";
        return 2;
    }
}
