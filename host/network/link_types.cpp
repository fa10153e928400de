#include "link_types.h"

#include <pcap/pcap.h>

namespace {

constexpr unsigned kRawInFile = 101;

}  // namespace

std::string linkTypeName(unsigned linkType) {
    return pcap_datalink_val_to_description_or_dlt(static_cast<int>(linkType));
}

unsigned linkTypeFromFile(unsigned number) {
    return number == kRawInFile ? DLT_RAW : number;
}

unsigned linkTypeInFile(unsigned linkType) {
    return linkType == DLT_RAW ? kRawInFile : linkType;
}
