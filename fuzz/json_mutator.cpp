#include "fuzz_target.h"

#include <json/reader.h>
#include <json/writer.h>

#include <cstring>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

/*
 * Mutations for targets that read JSON. Changed bytes nearly always break a document, and JsonCpp,
 * which is not instrumented, does not tell the fuzzer which did not: so most mutations here change
 * the document itself, and some its text.
 */

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size,
                                        std::size_t maximumSize);

namespace {

using Random = std::minstd_rand;

std::size_t below(Random& random, std::size_t end)
{
    return random() % end;
}

void collect(Json::Value& value, std::vector<Json::Value*>* all)
{
    all->push_back(&value);
    if (value.isArray() || value.isObject()) {
        for (Json::Value& child : value)
            collect(child, all);
    }
}

Json::Value anyScalar(Random& random)
{
    static const std::vector<Json::Value> scalars = {
        Json::Value(),
        Json::Value(true),
        Json::Value(false),
        Json::Value(0),
        Json::Value(-1),
        Json::Value(37),
        Json::Value(255),
        Json::Value(std::numeric_limits<Json::Int>::min()),
        Json::Value(std::numeric_limits<Json::UInt>::max()),
        Json::Value(std::numeric_limits<Json::Int64>::min()),
        Json::Value(std::numeric_limits<Json::UInt64>::max()),
        Json::Value(1.0),
        Json::Value(-0.123456789),
        Json::Value(1e300),
        Json::Value(""),
        Json::Value("True"),
        Json::Value("l,0,1"),
        Json::Value("l,1,2,3000000000"),
        Json::Value("l,,"),
        Json::Value("B"),
        Json::Value("BBBBB"),
        Json::Value("H"),
        Json::Value("I"),
        Json::Value("hiq"),
        Json::Value("f"),
        Json::Value("d"),
        Json::Value("s"),
        Json::Value("strandel"),
        Json::Value("fabrino_2"),
        Json::Value("\xff\xc3\xbc"),
        Json::Value(Json::arrayValue),
        Json::Value(Json::objectValue),
    };
    return scalars[below(random, scalars.size())];
}

/** A name that means something in one of the documents that are read, or an odd one. */
std::string anyName(Random& random)
{
    static const char* const names[] = {"eeprom_map",
                                        "sub_map",
                                        "offset",
                                        "type",
                                        "value",
                                        "floating_point",
                                        "constraints",
                                        "unit",
                                        "axis_expand",
                                        "tooltip",
                                        "",
                                        "_x__y",
                                        "JKN_advance",
                                        "a.b",
                                        "machines",
                                        "home \xc3\xbc",
                                        "machine_type",
                                        "slicer"};
    return names[below(random, sizeof names / sizeof names[0])];
}

void mutate(Json::Value& document, Random& random)
{
    std::vector<Json::Value*> all;
    collect(document, &all);
    Json::Value& target = *all[below(random, all.size())];
    const Json::Value other = *all[below(random, all.size())];
    switch (below(random, 5)) {
    case 0:
        target = anyScalar(random);
        return;
    case 1:
        target = other;
        return;
    case 2:
        if (target.isArray() || target.isNull())
            target.append(below(random, 2) ? other : anyScalar(random));
        else if (target.isObject())
            target[anyName(random)] = below(random, 2) ? other : anyScalar(random);
        else
            target = anyScalar(random);
        return;
    case 3:
        if (target.isArray() && !target.empty()) {
            target.resize(target.size() - 1);
        } else if (target.isObject() && !target.empty()) {
            const auto names = target.getMemberNames();
            target.removeMember(names[below(random, names.size())]);
        }
        return;
    default:
        // An entry of its own, with as many values as its type has codes.
        if (target.isObject()) {
            static const std::string codes = "BbHhIiqfds";
            const std::size_t count = 1 + below(random, 5);
            Json::Value entry;
            entry["offset"] = 0;
            entry["type"] = std::string(count, codes[below(random, codes.size())]);
            for (std::size_t i = 0; i < count; ++i)
                entry["value"].append(anyScalar(random));
            target[anyName(random) + std::to_string(below(random, 10))] = entry;
        }
    }
}

} // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t maximumSize, unsigned int seed)
{
    Random random(seed + 1);
    Json::Value document;
    try {
        const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
        const char* const text = reinterpret_cast<const char*>(data);
        if (below(random, 10) == 0 || !reader->parse(text, text + size, &document, nullptr))
            return LLVMFuzzerMutate(data, size, maximumSize);
        for (std::size_t i = 0; i <= below(random, 4); ++i)
            mutate(document, random);
        Json::StreamWriterBuilder builder;
        builder["indentation"] = "";
        const std::string changed = Json::writeString(builder, document);
        if (changed.size() > maximumSize)
            return size;
        std::memcpy(data, changed.data(), changed.size());
        return changed.size();
    } catch (const Json::Exception&) {
        return LLVMFuzzerMutate(data, size, maximumSize);
    }
}
