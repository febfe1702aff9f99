// The packet codec against frames written out by hand, field by field.

#include "sim/line/Random.h"
#include "sim/line/RdmCodec.h"

#include <gtest/gtest.h>

namespace zol::sim::rdm {
namespace {

Bytes B(std::initializer_list<int> values) {
    Bytes out;
    for (int v : values)
        out.push_back(char(v));
    return out;
}

// GET DEVICE_INFO from the controller 6B72:00000001 to the responder 4D48:00000101.
const Bytes kGetDeviceInfo = B({
    0xCC,                               // start code
    0x01,                               // sub-start code
    0x18,                               // message length: 24, no parameter data
    0x4D, 0x48, 0x00, 0x00, 0x01, 0x01, // destination UID 4D48:00000101
    0x6B, 0x72, 0x00, 0x00, 0x00, 0x01, // source UID 6B72:00000001
    0x05,                               // transaction number
    0x01,                               // port id 1
    0x00,                               // message count
    0x00, 0x00,                         // sub device 0 (root)
    0x20,                               // GET_COMMAND
    0x00, 0x60,                         // PID DEVICE_INFO
    0x00,                               // PDL 0
    0x02, 0xE0,                         // checksum: 229 + 151 + 222 + 5 + 1 + 32 + 96 = 736 = 0x02E0
});

// ACK to GET DMX_START_ADDRESS: address 300, and three queued messages.
const Bytes kAckStartAddress = B({
    0xCC, 0x01,                         // start code, sub-start code
    0x1A,                               // message length 26: 24 + 2 bytes of data
    0x6B, 0x72, 0x00, 0x00, 0x00, 0x01, // destination: the controller
    0x4D, 0x48, 0x00, 0x00, 0x01, 0x01, // source: the responder
    0x05,                               // transaction number, as in the request
    0x00,                               // response type ACK
    0x02,                               // message count 2
    0x00, 0x03,                         // sub device 3
    0x21,                               // GET_COMMAND_RESPONSE
    0x00, 0xF0,                         // PID DMX_START_ADDRESS
    0x02,                               // PDL 2
    0x01, 0x2C,                         // 300
    0x03, 0xA6,                         // checksum 0x03A6
});

// NACK to SET DEVICE_LABEL: NR_WRITE_PROTECT.
const Bytes kNackWriteProtect = B({
    0xCC, 0x01, 0x1A,                   // start code, sub-start code, length 26
    0x6B, 0x72, 0x00, 0x00, 0x00, 0x01, // destination
    0x4D, 0x48, 0x00, 0x00, 0x01, 0x01, // source
    0x07,                               // transaction number
    0x02,                               // response type NACK_REASON
    0x00,                               // message count
    0x00, 0x05,                         // sub device 5
    0x31,                               // SET_COMMAND_RESPONSE
    0x00, 0x82,                         // PID DEVICE_LABEL
    0x02,                               // PDL 2
    0x00, 0x04,                         // NR_WRITE_PROTECT
    0x03, 0x23,                         // checksum 0x0323
});

// DISC_UNIQUE_BRANCH over the whole UID space.
const Bytes kDubAll = B({
    0xCC, 0x01, 0x24,                   // start code, sub-start code, length 36: 24 + 12
    0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, // destination: all devices
    0x6B, 0x72, 0x00, 0x00, 0x00, 0x01, // source
    0x00,                               // transaction number
    0x01,                               // port id
    0x00,                               // message count
    0x00, 0x00,                         // sub device
    0x10,                               // DISCOVERY_COMMAND
    0x00, 0x01,                         // PID DISC_UNIQUE_BRANCH
    0x0C,                               // PDL 12
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, // lower bound 0000:00000000
    0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE, // upper bound FFFF:FFFFFFFE
    0x0D, 0xE0,                         // checksum 0x0DE0
});

// The DUB reply of 4D48:00000101.
const Bytes kDubReply = B({
    0xFE, 0xFE, 0xFE, 0xFE, 0xFE, 0xFE, 0xFE, // preamble, seven bytes
    0xAA,                                     // separator
    0xEF, 0x5D,                               // 0x4D | 0xAA, 0x4D | 0x55
    0xEA, 0x5D,                               // 0x48 | 0xAA, 0x48 | 0x55
    0xAA, 0x55,                               // 0x00
    0xAA, 0x55,                               // 0x00
    0xAB, 0x55,                               // 0x01
    0xAB, 0x55,                               // 0x01
    // Checksum of the twelve bytes above: 0x14C + 0x147 + 0x1FE + 0x200 = 0x0691.
    0xAE, 0x57, // 0x06 | 0xAA, 0x06 | 0x55
    0xBB, 0xD5, // 0x91 | 0xAA, 0x91 | 0x55
});

TEST(RdmCodec, EncodesRequestByteForByte) {
    Packet packet;
    packet.destination = 0x4D4800000101ULL;
    packet.source = 0x6B7200000001ULL;
    packet.transaction = 5;
    packet.portOrType = 1;
    packet.subDevice = 0;
    packet.commandClass = kGet;
    packet.pid = DEVICE_INFO;
    EXPECT_EQ(Encode(packet), kGetDeviceInfo);
}

TEST(RdmCodec, EncodesResponsesByteForByte) {
    Packet ack;
    ack.destination = 0x6B7200000001ULL;
    ack.source = 0x4D4800000101ULL;
    ack.transaction = 5;
    ack.portOrType = kAck;
    ack.messageCount = 2;
    ack.subDevice = 3;
    ack.commandClass = kGetResponse;
    ack.pid = DMX_START_ADDRESS;
    ack.data = B({0x01, 0x2C});
    EXPECT_EQ(Encode(ack), kAckStartAddress);

    Packet nack;
    nack.destination = 0x6B7200000001ULL;
    nack.source = 0x4D4800000101ULL;
    nack.transaction = 7;
    nack.portOrType = kNackReason;
    nack.subDevice = 5;
    nack.commandClass = kSetResponse;
    nack.pid = DEVICE_LABEL;
    nack.data = B({0x00, 0x04});
    EXPECT_EQ(Encode(nack), kNackWriteProtect);
}

TEST(RdmCodec, EncodesDiscoveryRequest) {
    Packet dub;
    dub.destination = kBroadcastUid;
    dub.source = 0x6B7200000001ULL;
    dub.portOrType = 1;
    dub.commandClass = kDiscovery;
    dub.pid = DISC_UNIQUE_BRANCH;
    PutUid(dub.data, 0);
    PutUid(dub.data, kMaxUid);
    EXPECT_EQ(Encode(dub), kDubAll);
}

TEST(RdmCodec, DecodesHandWrittenFrames) {
    Packet packet;
    ASSERT_EQ(Decode(kAckStartAddress, packet), DecodeError::None);
    EXPECT_EQ(packet.destination, 0x6B7200000001ULL);
    EXPECT_EQ(packet.source, 0x4D4800000101ULL);
    EXPECT_EQ(packet.transaction, 5);
    EXPECT_EQ(packet.portOrType, kAck);
    EXPECT_EQ(packet.messageCount, 2);
    EXPECT_EQ(packet.subDevice, 3);
    EXPECT_EQ(packet.commandClass, kGetResponse);
    EXPECT_EQ(packet.pid, DMX_START_ADDRESS);
    EXPECT_EQ(packet.data, B({0x01, 0x2C}));

    ASSERT_EQ(Decode(kDubAll, packet), DecodeError::None);
    EXPECT_EQ(GetUid(packet.data, 0), 0u);
    EXPECT_EQ(GetUid(packet.data, 6), kMaxUid);
}

TEST(RdmCodec, ReportsWhatIsWrongWithABadFrame) {
    Packet packet;
    EXPECT_EQ(Decode(kGetDeviceInfo.substr(0, 25), packet), DecodeError::Short);

    Bytes wrongStart = kGetDeviceInfo;
    wrongStart[0] = char(0xCD);
    EXPECT_EQ(Decode(wrongStart, packet), DecodeError::StartCode);

    Bytes wrongSubStart = kGetDeviceInfo;
    wrongSubStart[1] = 0x02;
    EXPECT_EQ(Decode(wrongSubStart, packet), DecodeError::SubStartCode);

    Bytes extraByte = kGetDeviceInfo + '\0';
    EXPECT_EQ(Decode(extraByte, packet), DecodeError::LengthMismatch);

    // Length says 25 and one more byte follows, but the PDL still says 0.
    Bytes pdl = kGetDeviceInfo.substr(0, 24);
    pdl[2] = 25;
    pdl.push_back(0x11);
    PutU16(pdl, Checksum(pdl));
    EXPECT_EQ(Decode(pdl, packet), DecodeError::PdlMismatch);

    Bytes flipped = kGetDeviceInfo;
    flipped[12] = char(uint8_t(flipped[12]) ^ 0x10);
    EXPECT_EQ(Decode(flipped, packet), DecodeError::Checksum);
}

TEST(RdmCodec, RefusesParameterDataAboveTheLimit) {
    Packet packet;
    packet.data = Bytes(231, 'x');
    EXPECT_EQ(Encode(packet).size(), 257u);
    packet.data = Bytes(232, 'x');
    EXPECT_THROW(Encode(packet), std::invalid_argument);
}

TEST(RdmCodec, RoundTripsRandomPackets) {
    zol::sim::line::Random random(77);
    for (int i = 0; i < 500; ++i) {
        Packet packet;
        packet.destination = random.Next() & kBroadcastUid;
        packet.source = random.Next() & kBroadcastUid;
        packet.transaction = uint8_t(random.Next());
        packet.portOrType = uint8_t(random.Next());
        packet.messageCount = uint8_t(random.Next());
        packet.subDevice = uint16_t(random.Next());
        packet.commandClass = uint8_t(random.Next());
        packet.pid = uint16_t(random.Next());
        const size_t length = random.Below(kMaxPdl + 1);
        for (size_t b = 0; b < length; ++b)
            packet.data.push_back(char(random.Next()));
        const Bytes bytes = Encode(packet);
        ASSERT_EQ(bytes.size(), 26 + length);
        Packet back;
        ASSERT_EQ(Decode(bytes, back), DecodeError::None);
        EXPECT_EQ(back, packet);
    }
}

TEST(RdmCodec, EncodesDubReplyByteForByte) {
    EXPECT_EQ(EncodeDubReply(0x4D4800000101ULL), kDubReply);
    // A shorter preamble only drops 0xFE bytes.
    EXPECT_EQ(EncodeDubReply(0x4D4800000101ULL, 2), kDubReply.substr(5));
}

TEST(RdmCodec, DecodesDubReplies) {
    Uid uid = 0;
    EXPECT_EQ(DecodeDubReply(kDubReply, uid), DubDecode::Valid);
    EXPECT_EQ(uid, 0x4D4800000101ULL);
    EXPECT_EQ(DecodeDubReply(kDubReply.substr(7), uid), DubDecode::Valid) << "no preamble";

    Bytes badSum = kDubReply;
    badSum[23] = char(0xD7); // 0x93 | 0x55: still well formed, wrong checksum
    EXPECT_EQ(DecodeDubReply(badSum, uid), DubDecode::Checksum);

    Bytes badEncoding = kDubReply;
    badEncoding[8] = 0x4D; // the 0xAA bits are missing
    EXPECT_EQ(DecodeDubReply(badEncoding, uid), DubDecode::Format);

    EXPECT_EQ(DecodeDubReply(kDubReply.substr(0, 20), uid), DubDecode::Format) << "short";
    EXPECT_EQ(DecodeDubReply(Bytes(8, char(0xFE)), uid), DubDecode::Format) << "no separator";
}

TEST(RdmCodec, WiredAndOfTwoDubRepliesDecodesAsTheirBitwiseAnd) {
    const Bytes a = EncodeDubReply(0x4D4800000101ULL);
    const Bytes b = EncodeDubReply(0x4D4800000100ULL);
    Bytes sum = a;
    for (size_t i = 0; i < sum.size(); ++i)
        sum[i] = char(uint8_t(a[i]) & uint8_t(b[i]));
    Uid uid = 0;
    // One bit apart: the sum is the reply of the lower UID itself.
    EXPECT_EQ(DecodeDubReply(sum, uid), DubDecode::Valid);
    EXPECT_EQ(uid, 0x4D4800000100ULL);
}

TEST(RdmCodec, UidText) {
    EXPECT_EQ(UidText(0x4D4800000101ULL), "4D48:00000101");
    Uid uid = 0;
    ASSERT_TRUE(ParseUid("4d48:000001ff", uid));
    EXPECT_EQ(uid, 0x4D48000001FFULL);
    ASSERT_TRUE(ParseUid("4D48000001FF", uid));
    EXPECT_EQ(uid, 0x4D48000001FFULL);
    EXPECT_FALSE(ParseUid("4D48:0000010", uid));
    EXPECT_FALSE(ParseUid("4D4:800000101", uid));
    EXPECT_FALSE(ParseUid("4D48:0000010G", uid));
}

TEST(RdmCodec, PidNames) {
    EXPECT_EQ(PidName(DMX_PERSONALITY), "DMX_PERSONALITY");
    EXPECT_EQ(PidByName("REAL_TIME_CLOCK"), REAL_TIME_CLOCK);
    EXPECT_EQ(PidByName("NOT_A_PID"), -1);
    EXPECT_EQ(PidName(0x7777), "");
}

} // namespace
} // namespace zol::sim::rdm
