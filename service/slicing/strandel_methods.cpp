#include "slicing/strandel_methods.h"

#include "method_table.h"
#include "slicing/strandel_config.h"

#include <trovek/wire.h>

#include <exception>

namespace trovek::service {

namespace {

/** What is wrong with a document is a wrong argument. */
template <typename Look>
MethodTable::Method documentMethod(Look look)
{
    return [look](const Call& call) -> Json::Value {
        const Json::Value& document = call.params.object("config");
        try {
            return look(document);
        } catch (const std::exception& error) {
            throw wire::makeError(wire::error::kInvalidArgument, error.what());
        }
    };
}

} // namespace

void addStrandelMethods(MethodTable& table)
{
    table.add(wire::method::kStrandelConfigVersionCheck,
              documentMethod([](const Json::Value& document) {
                  return static_cast<int>(checkStrandelVersion(document));
              }));
    table.add(wire::method::kUpgradeStrandelConfig, documentMethod(upgradeStrandelConfig));
}

} // namespace trovek::service
