// The simulated line decodes whatever the wire carries: a received byte string is a good packet or
// a named decode error, and a good packet encodes back to the same bytes.
#include "sim/line/RdmCodec.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

using namespace zol::sim::rdm;

std::vector<std::string> ZolFuzzSeeds() {
    Packet get;
    get.destination = 0x4D4800000101ull;
    get.source = 0x6B7200000001ull;
    get.transaction = 7;
    get.portOrType = 1;
    get.commandClass = 0x20;
    get.pid = 0x0060;
    Packet ack = get;
    ack.commandClass = 0x21;
    ack.data =
        std::string("\x01\x00\x00\x10\x01\x01\x00\x00\x00\x01\x00\x0C\x01\x01\x00\x01\x00\x00\x02", 19);
    return {Encode(get), Encode(ack), EncodeDubReply(0x4D4800000101ull),
            EncodeDubReply(0x6B72FFFFFFFEull, 0)};
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const Bytes bytes(reinterpret_cast<const char*>(data), size);
    Packet packet;
    if (Decode(bytes, packet) == DecodeError::None) {
        if (Encode(packet) != bytes) {
            std::fprintf(stderr, "a decoded packet does not encode back to its bytes\n");
            std::abort();
        }
    }
    Uid uid = 0;
    if (DecodeDubReply(bytes, uid) == DubDecode::Valid) {
        Uid again = 0;
        if (DecodeDubReply(EncodeDubReply(uid), again) != DubDecode::Valid || again != uid) {
            std::fprintf(stderr, "a decoded DUB reply does not encode back to its UID\n");
            std::abort();
        }
    }
    return 0;
}
