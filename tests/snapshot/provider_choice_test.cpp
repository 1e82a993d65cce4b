// The provider each volume gets, and the line that says so.
#include "snapshot_test_support.h"

#include "common/format/format.h"
#include "snapshot/provider_choice.h"

#include <gtest/gtest.h>

using namespace snapshot_test;

namespace {

const std::string other = "{12345678-aaaa-bbbb-cccc-1234567890ab}";

} // namespace

TEST(ProviderChoice, FollowsTheTypeOfTheVolumesEntry) {
    struct case_t {
        const char* name;
        std::string providers;
        std::wstring mountPoint;
        std::string id;
        std::string line;
    };
    for (const case_t& c :
         {case_t{"NothingSpecified", "", L"C:\\", "{00000000-0000-0000-0000-000000000000}",
                 "Snapshot provider is not specified for volume [C:\\]. Default one will be used."},
          case_t{"SystemIgnoresItsId", "<VSSProvider type=\"1\" id=\"" + other + "\"/>", L"C:\\",
                 "{b5946137-7b9f-4925-af80-51abd60b20d5}", "System provider will be used for volume [C:\\]."},
          case_t{"FileShare",
                 "<volumes><volProvider type=\"4\" id=\"" + other +
                     "\" volMountPoint=\"\\\\fs\\s\"/></volumes>",
                 L"\\\\FS\\S\\", "{89300202-3cec-4981-9171-19f59559e0f2}",
                 "File share provider will be used for the volume [\\\\FS\\S\\]."},
          case_t{"CsvByPathEquality",
                 "<volumes><volProvider type=\"5\" id=\"" + other +
                     "\" volMountPoint=\"C:\\CS\\V1\"/></volumes>",
                 L"c:\\cs\\v1\\", "{400a2ff4-5eb1-44b0-8a05-1fcac0bcf9ff}",
                 "CSV provider will be used for the volume [c:\\cs\\v1\\]."},
          case_t{"Software", "<VSSProvider type=\"2\" id=\"" + other + "\"/>", L"C:\\", other,
                 "Software provider [" + other + "] will be used for volume [C:\\]."},
          case_t{"UnknownTypeCountsAsHardware", "<VSSProvider type=\"7\" id=\"" + other + "\"/>", L"C:\\",
                 other, "Hardware provider [" + other + "] will be used for the volume [C:\\]."}}) {
        SCOPED_TRACE(c.name);
        auto spec = parse_spec(spec_xml({}, c.providers));
        log_capture_t log;
        EXPECT_EQ(guid_to_string(impl::ChooseProvider(*spec, c.mountPoint)), c.id);
        EXPECT_TRUE(log.has(c.line)) << log.text();
    }
}
