#include "platform/registry_text.h"

#include <gtest/gtest.h>

#include <string>

using qv5::detail::kRegistryBinary;
using qv5::detail::kRegistryDword;
using qv5::detail::kRegistryString;
using qv5::detail::RegistryText;
using qv5::detail::RegistryValue;
using qv5::detail::split_key_path;

namespace {

constexpr const char16_t* kKey = u"SOFTWARE\\Halvik\\QV5\\Units";

RegistryValue binary(std::initializer_list<unsigned char> bytes) {
    return RegistryValue{kRegistryBinary, bytes};
}

RegistryValue value_of(const RegistryText& text, std::u16string_view path,
                       std::u16string_view name) {
    RegistryValue value;
    EXPECT_TRUE(text.find_value(path, name, value));
    return value;
}

TEST(RegistryText, FreshTextGainsSignatureKeyAndValue) {
    RegistryText text = RegistryText::parse("");
    ASSERT_TRUE(text.usable());
    EXPECT_FALSE(text.has_key(kKey));
    ASSERT_TRUE(text.set_value(kKey, u"Bearings", binary({2, 0, 0, 0})));
    EXPECT_EQ(text.text(), "Windows Registry Editor Version 5.00\n"
                           "\n"
                           "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Halvik\\QV5\\Units]\n"
                           "\"Bearings\"=hex:02,00,00,00\n"
                           "\n");
}

TEST(RegistryText, AddKeyWritesAnEmptySection) {
    RegistryText text = RegistryText::parse("");
    ASSERT_TRUE(text.add_key(u"Software\\Test"));
    EXPECT_TRUE(text.has_key(u"software\\TEST"));
    EXPECT_EQ(text.text(), "Windows Registry Editor Version 5.00\n\n"
                           "[HKEY_LOCAL_MACHINE\\Software\\Test]\n\n");
    const std::string once = text.text();
    ASSERT_TRUE(text.add_key(u"Software\\Test"));
    EXPECT_EQ(text.text(), once); // an existing key is left as it is
}

TEST(RegistryText, ReadsEveryValueForm) {
    const RegistryText text = RegistryText::parse("Windows Registry Editor Version 5.00\r\n"
                                                  "\r\n"
                                                  "[HKEY_LOCAL_MACHINE\\Software\\Test]\r\n"
                                                  "@=\"default\"\r\n"
                                                  "\"Text\"=\"a \\\"quoted\\\" \\\\ path\"\r\n"
                                                  "\"Number\"=dword:0000002a\r\n"
                                                  "\"Bytes\"=hex:01,ff,10\r\n"
                                                  "\"Typed\"=hex(b):01,02,03,04,05,06,07,08\r\n"
                                                  "\"Long\"=hex:01,02,\\\r\n"
                                                  "  03,04\r\n"
                                                  "\"Empty\"=hex:\r\n");
    ASSERT_TRUE(text.usable());
    const RegistryValue number = value_of(text, u"Software\\Test", u"Number");
    EXPECT_EQ(number.type, kRegistryDword);
    EXPECT_EQ(number.data, (std::vector<unsigned char>{0x2a, 0, 0, 0}));
    EXPECT_EQ(value_of(text, u"Software\\Test", u"Bytes"), binary({0x01, 0xff, 0x10}));
    const RegistryValue typed = value_of(text, u"Software\\Test", u"typed");
    EXPECT_EQ(typed.type, 0xBu);
    EXPECT_EQ(typed.data.size(), 8u);
    EXPECT_EQ(value_of(text, u"Software\\Test", u"Long"), binary({1, 2, 3, 4}));
    EXPECT_EQ(value_of(text, u"Software\\Test", u"Empty"), binary({}));
    const RegistryValue quoted = value_of(text, u"Software\\Test", u"Text");
    EXPECT_EQ(quoted.type, kRegistryString);
    // "a "quoted" \ path" as UTF-16LE with its terminator.
    EXPECT_EQ(quoted.data.size(), 2u * (17 + 1));
    EXPECT_EQ(quoted.data[4], '"');
    const RegistryValue at = value_of(text, u"Software\\Test", u"");
    EXPECT_EQ(at.data.size(), 2u * 8);
}

TEST(RegistryText, KeysAndNamesMatchIgnoringCaseAndStraySlashes) {
    const RegistryText text = RegistryText::parse("REGEDIT4\n"
                                                  "[hkey_local_machine\\SOFTWARE\\\\Halvik\\]\n"
                                                  "\"BEARINGS\"=dword:00000003\n");
    EXPECT_TRUE(text.has_key(u"\\software\\halvik"));
    EXPECT_TRUE(text.has_key(u"Software")); // a parent of a key with a section exists too
    EXPECT_FALSE(text.has_key(u"Software\\Halvik\\QV5"));
    RegistryValue value;
    EXPECT_TRUE(text.find_value(u"Software\\Halvik", u"bearings", value));
    EXPECT_FALSE(text.find_value(u"Software", u"bearings", value)); // values belong to one key
}

TEST(RegistryText, LaterEntriesWinAndDeletionsHide) {
    const RegistryText text = RegistryText::parse("Windows Registry Editor Version 5.00\n"
                                                  "[HKEY_LOCAL_MACHINE\\K]\n"
                                                  "\"A\"=dword:00000001\n"
                                                  "\"A\"=dword:00000002\n"
                                                  "\"B\"=dword:00000001\n"
                                                  "\"B\"=-\n"
                                                  "\"C\"=dword:00000001\n"
                                                  "\"C\"=dword:zz\n"
                                                  "[HKEY_LOCAL_MACHINE\\K]\n"
                                                  "\"A\"=dword:00000003\n");
    RegistryValue value;
    ASSERT_TRUE(text.find_value(u"K", u"A", value));
    EXPECT_EQ(value.data[0], 3);
    EXPECT_FALSE(text.find_value(u"K", u"B", value));
    ASSERT_TRUE(text.find_value(u"K", u"C", value)); // a malformed line does not hide
    EXPECT_EQ(value.data[0], 1);
}

TEST(RegistryText, OtherHivesAndDeletedKeysAreNotServed) {
    const RegistryText text = RegistryText::parse("Windows Registry Editor Version 5.00\n"
                                                  "[HKEY_CURRENT_USER\\K]\n"
                                                  "\"A\"=dword:00000001\n"
                                                  "[-HKEY_LOCAL_MACHINE\\K]\n"
                                                  "\"A\"=dword:00000002\n");
    RegistryValue value;
    EXPECT_FALSE(text.has_key(u"K"));
    EXPECT_FALSE(text.find_value(u"K", u"A", value));
}

TEST(RegistryText, MalformedLinesAreSkippedNotFatal) {
    const RegistryText text = RegistryText::parse("Windows Registry Editor Version 5.00\n"
                                                  "[HKEY_LOCAL_MACHINE\\K]\n"
                                                  "garbage line\n"
                                                  "\"Unclosed=dword:00000001\n"
                                                  "\"NoEquals\" dword:00000001\n"
                                                  "\"Wide\"=dword:123456789\n"
                                                  "\"BadHex\"=hex:1,2,,3\n"
                                                  "\"BadType\"=hex(zz):01\n"
                                                  "\"Tail\"=\"text\" junk\n"
                                                  "\"Good\"=hex:04,00,00,00\n"
                                                  "[broken header\n");
    ASSERT_TRUE(text.usable());
    RegistryValue value;
    for (const char16_t* name :
         {u"Unclosed", u"NoEquals", u"Wide", u"BadHex", u"BadType", u"Tail"}) {
        EXPECT_FALSE(text.find_value(u"K", name, value)) << std::u16string(name).size();
    }
    EXPECT_EQ(value_of(text, u"K", u"Good"), binary({4, 0, 0, 0}));
}

TEST(RegistryText, AFileWithoutTheSignatureIsUnusableAndReadsEmpty) {
    RegistryText text = RegistryText::parse("hello\n[HKEY_LOCAL_MACHINE\\K]\n\"A\"=dword:1\n");
    EXPECT_FALSE(text.usable());
    RegistryValue value;
    EXPECT_FALSE(text.find_value(u"K", u"A", value));
    EXPECT_FALSE(text.has_key(u"K"));
    EXPECT_FALSE(text.add_key(u"K"));
    EXPECT_FALSE(text.set_value(u"K", u"A", binary({1})));
    EXPECT_FALSE(RegistryText::unreadable().usable());
}

TEST(RegistryText, BlankFileIsAFreshRegistry) {
    EXPECT_TRUE(RegistryText::parse("\n\r\n  \n").usable());
}

TEST(RegistryText, Utf16FileWithByteOrderMarkIsRead) {
    const std::string utf8 = "Windows Registry Editor Version 5.00\r\n\r\n"
                             "[HKEY_LOCAL_MACHINE\\K\\\xC3\x9C]\r\n\"A\"=dword:00000005\r\n";
    std::string utf16 = "\xFF\xFE";
    for (const char c : utf8) {
        if (c == '\xC3') {
            continue; // the two bytes of U+00DC become one unit below
        }
        if (c == '\x9C') {
            utf16 += std::string("\xDC\x00", 2);
            continue;
        }
        utf16.push_back(c);
        utf16.push_back('\0');
    }
    const RegistryText text = RegistryText::parse(utf16);
    EXPECT_EQ(value_of(text, u"K\\\u00DC", u"A").data[0], 5);
    EXPECT_EQ(text.text().substr(0, 3), "Win"); // written back as UTF-8 without a mark
}

TEST(RegistryText, Utf8ByteOrderMarkIsSkipped) {
    const RegistryText text = RegistryText::parse("\xEF\xBB\xBFREGEDIT4\n[HKEY_LOCAL_MACHINE\\K]\n"
                                                  "\"A\"=dword:00000005\n");
    EXPECT_EQ(value_of(text, u"K", u"A").data[0], 5);
}

TEST(RegistryText, SettingReplacesInPlaceAndKeepsEverythingElse) {
    const std::string original = "Windows Registry Editor Version 5.00\r\n"
                                 "; written by hand\r\n"
                                 "\r\n"
                                 "[HKEY_CURRENT_USER\\Other]\r\n"
                                 "\"A\"=dword:00000001\r\n"
                                 "\r\n"
                                 "[HKEY_LOCAL_MACHINE\\K]\r\n"
                                 "\"First\"=dword:00000001\r\n"
                                 "odd line kept\r\n"
                                 "\"bearings\"=hex:00,00,00,00\r\n"
                                 "\"Last\"=\"x\"\r\n"
                                 "\r\n";
    RegistryText text = RegistryText::parse(original);
    ASSERT_TRUE(text.set_value(u"K", u"Bearings", binary({3, 0, 0, 0})));
    ASSERT_TRUE(text.set_value(u"K", u"Added", RegistryValue{kRegistryDword, {1, 0, 0, 0}}));
    EXPECT_EQ(text.text(), "Windows Registry Editor Version 5.00\r\n"
                           "; written by hand\r\n"
                           "\r\n"
                           "[HKEY_CURRENT_USER\\Other]\r\n"
                           "\"A\"=dword:00000001\r\n"
                           "\r\n"
                           "[HKEY_LOCAL_MACHINE\\K]\r\n"
                           "\"First\"=dword:00000001\r\n"
                           "odd line kept\r\n"
                           "\"Bearings\"=hex:03,00,00,00\r\n"
                           "\"Last\"=\"x\"\r\n"
                           "\"Added\"=dword:00000001\r\n"
                           "\r\n");
}

TEST(RegistryText, SettingRemovesEarlierDuplicates) {
    RegistryText text = RegistryText::parse("REGEDIT4\n"
                                            "[HKEY_LOCAL_MACHINE\\K]\n"
                                            "\"A\"=dword:00000001\n"
                                            "[HKEY_LOCAL_MACHINE\\K]\n"
                                            "\"A\"=dword:00000002\n"
                                            "\"a\"=dword:00000003\n");
    ASSERT_TRUE(text.set_value(u"K", u"A", binary({9, 0, 0, 0})));
    EXPECT_EQ(text.text(), "REGEDIT4\n"
                           "[HKEY_LOCAL_MACHINE\\K]\n"
                           "[HKEY_LOCAL_MACHINE\\K]\n"
                           "\"A\"=hex:09,00,00,00\n");
}

TEST(RegistryText, NamesWithQuotesAndBackslashesRoundTrip) {
    RegistryText text = RegistryText::parse("");
    const std::u16string name = u"say \"hi\" \\ there";
    ASSERT_TRUE(text.set_value(u"K", name, binary({7})));
    const RegistryText again = RegistryText::parse(text.text());
    EXPECT_EQ(value_of(again, u"K", name), binary({7}));
    EXPECT_NE(text.text().find("\"say \\\"hi\\\" \\\\ there\"=hex:07"), std::string::npos);
}

TEST(RegistryText, OtherValueTypesAreWrittenAsTypedHex) {
    RegistryText text = RegistryText::parse("");
    ASSERT_TRUE(text.set_value(u"K", u"Q", RegistryValue{0xB, {1, 2}}));
    ASSERT_TRUE(text.set_value(u"K", u"D", RegistryValue{kRegistryDword, {1, 2}}));
    EXPECT_NE(text.text().find("\"Q\"=hex(b):01,02\n"), std::string::npos);
    EXPECT_NE(text.text().find("\"D\"=hex(4):01,02\n"), std::string::npos);
    const RegistryText again = RegistryText::parse(text.text());
    EXPECT_EQ(value_of(again, u"K", u"Q"), (RegistryValue{0xB, {1, 2}}));
}

TEST(RegistryText, UnrecordableNamesAndPathsAreRefused) {
    RegistryText text = RegistryText::parse("");
    EXPECT_FALSE(text.set_value(u"K", u"two\nlines", binary({1})));
    EXPECT_FALSE(text.set_value(u"", u"A", binary({1})));
    EXPECT_FALSE(text.set_value(u"\\\\", u"A", binary({1})));
    EXPECT_FALSE(text.set_value(u"K\\bad\tpart", u"A", binary({1})));
    const std::u16string lone = {u'K', char16_t(0xD800)};
    EXPECT_FALSE(text.set_value(lone, u"A", binary({1})));
    EXPECT_FALSE(text.add_key(u""));
    EXPECT_EQ(text.text(), ""); // nothing was added
}

TEST(SplitKeyPath, DropsEmptyComponents) {
    EXPECT_EQ(split_key_path(u"\\a\\\\b\\"), (std::vector<std::u16string>{u"a", u"b"}));
    EXPECT_TRUE(split_key_path(u"").empty());
    EXPECT_TRUE(split_key_path(u"a\\b\x01").empty());
}

} // namespace
