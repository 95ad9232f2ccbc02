// What the host sees of a class while it registers, and the page that it leaves behind.
#include <gtest/gtest.h>

#include <chrono>
#include <stdexcept>
#include <string>

#include "tests/framework/objects.h"

namespace fs = std::filesystem;

namespace {

// What one load printed on both streams.
struct printed {
    std::string out, err;
};

printed load(const std::string& object) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    tesk::host::the().load(object);
    return {testing::internal::GetCapturedStdout(), testing::internal::GetCapturedStderr()};
}

constexpr const char* missing = "file not found\nfailed to get date modified\n";
constexpr const char* updating = "Updating Reference Page for class plain\n";

lines traffic_between(const std::string& first, const std::string& last) {
    lines some;
    bool inside = false;
    for (const std::string& line : tesk::host::the().registrations()) {
        if (line.rfind(first, 0) == 0) inside = true;
        if (inside) some.push_back(line);
        if (line.rfind(last, 0) == 0) inside = false;
    }
    return some;
}

}  // namespace

TEST(Registration, ShowsTheHostMethodsOfTheirTypesInOrderOfEntry) {
    const package folder;
    load(folder.with(EXAMPLE_OBJECT));
    lines methods;
    for (const auto& method : tesk::host::the().described("example~").methods)
        methods.push_back(method.name + " " + std::to_string(method.type));
    EXPECT_EQ(methods, (lines{"setup 9",
                              "later 8",
                              "here 8",
                              "fails 8",
                              "sum 14",
                              "words 9",
                              "int 1",
                              "notify 9",
                              "key 9",
                              "getplaystate 9",
                              "oksize 9",
                              "bang 0",
                              "dblclick 9",
                              "edclose 9",
                              "okclose 9",
                              "loadbang 9",
                              "anything 8",
                              "dictionary 3",
                              "dspstate 9",
                              "paint 9",
                              "focusgained 9",
                              "focuslost 9",
                              "patchlineupdate 9",
                              "fileusage 9",
                              "appendtodictionary 9",
                              "float 2",
                              "mt_mouseenter 9",
                              "mt_mouseleave 9",
                              "mt_mousedown 9",
                              "mt_mouseup 9",
                              "mt_mousemove 9",
                              "mt_mousedrag 9",
                              "mousedragdelta 9",
                              "mousedoubleclick 9",
                              "mousewheel 9",
                              "getvalueof 9",
                              "setvalueof 9",
                              "preset 0",
                              "dsp64 9",
                              "assist 9"}));
    const auto& all = tesk::host::the().registrations();
    EXPECT_EQ(all.front(), "class_new example~ 8");
    // Behind the last attribute; the class's own set-up made the two matrix attributes.
    EXPECT_EQ(
        traffic_between("class_addmethod dsp64", "class_register"),
        (lines{"class_addmethod dsp64 9", "class_dspinit",
               "vrx_attr_offset matrix float64 1 0x8040000", "vrx_class_addattr matrix",
               "vrx_attr_offset_array matrix_list float64 65535 0x8040202",
               "vrx_class_addattr matrix_list", "class_addmethod assist 9", "class_register box"}));
}

TEST(Registration, DescribesEachAttributeByTheSameCallsInTheSameOrder) {
    const package folder;
    load(folder.with(EXAMPLE_OBJECT));
    const std::string parse = "class_attr_addattr_parse ", list = "class_attr_addattr_atoms ",
                      format = "class_attr_addattr_format ";
    const lines expected{
        "attr_offset_array_new value float64 65535 0x0", "class_addattr value",
        format + "value label symbol 0 ", parse + "value default float64 0 1.0 2.0",
        list + "value order long 0 0", "class_addmethod getvalueof 9",
        "class_addmethod setvalueof 9", "class_addmethod preset 0",
        "attr_offset_new gain float64 1 0x0", "class_addattr gain",
        format + "gain label symbol 0 Gain", parse + "gain default float64 0 0.5",
        list + "gain category symbol 0 Levels", list + "gain order long 0 0",
        parse + "gain minimum float64 0 \"0\"", parse + "gain maximum float64 0 \"1.5\"",
        // Three numbers are no bounds.
        "attr_offset_new Upper float64 1 0x0", "class_addattr Upper",
        format + "Upper label symbol 0 ", parse + "Upper default float64 0 3.0",
        list + "Upper order long 0 0", "attr_offset_new locked long 1 0x202",
        "class_addattr locked", format + "locked label symbol 0 Locked",
        parse + "locked style symbol 0 onoff", parse + "locked default long 0 1",
        list + "locked order long 0 0", "attr_offset_new secret float64 1 0x200",
        "class_addattr secret", parse + "secret invisible long 1 1",
        format + "secret label symbol 0 Secret", parse + "secret default float64 0 0.0",
        list + "secret order long 0 0", "attr_offset_array_new tint float64 65535 0x0",
        "class_addattr tint", format + "tint label symbol 0 Tint",
        parse + "tint defaultname symbol 0 0.250000 0.500000 0.750000 1.000000",
        "class_parameter_register_default_color tint lcd_bg", list + "tint order long 0 4",
        "attr_offset_new shape long 1 0x0", "class_addattr shape",
        format + "shape label symbol 0 Shape", parse + "shape style symbol 0 enumindex",
        parse + "shape default long 0 0", list + "shape order long 0 0",
        parse + "shape style symbol 0 enumindex",
        parse + "shape enumvals atom 0 \"round\" \"square\" \"quite flat\" ",
        parse + "shape minimum long 0 0", parse + "shape maximum long 0 2"};
    EXPECT_EQ(
        traffic_between("attr_offset_array_new value", "class_attr_addattr_parse shape maximum"),
        expected);
    const auto& described = tesk::host::the().described("example~");
    EXPECT_EQ(described.attribute("gone"), nullptr) << "a disabled attribute";
    EXPECT_EQ(described.attribute("fontname")->property("style"), "font");
    EXPECT_EQ(described.attribute("word")->property("style"), "enum");
    EXPECT_EQ(described.attribute("word")->value_names(), (lines{"a", "b", "c"}));
    EXPECT_EQ(described.attribute("gain")->number("maximum"), 1.5);
}

TEST(Registration, HappensOnceAndWaitsWhileTheHostAsksLibrariesTo) {
    const package folder;
    tesk::host& host = tesk::host::the();
    const tesk::live_memory before = host.live();
    const std::string object = folder.with(PLAIN_OBJECT);
    host.set_library(true);
    EXPECT_THROW(host.load(object), std::runtime_error);
    EXPECT_TRUE(host.registrations().empty());
    host.set_library(false);
    EXPECT_EQ(host.load(object), "plain");
    const std::size_t calls = host.registrations().size();
    EXPECT_EQ(host.load(object), "plain");
    EXPECT_EQ(host.registrations().size(), calls);
    // "float" alone takes integers too; without fingers the mouse keeps its names.
    const auto& methods = host.described("plain").methods;
    ASSERT_GE(methods.size(), 3u);
    EXPECT_EQ(methods[0].name + methods[1].name + methods[2].name, "floatintmousedown");
    EXPECT_EQ(host.live(), before) << "the prototype gave everything back";
}

TEST(Registration, RefusesFilesThatAreNoObjects) {
    const package folder;
    const std::string file = (folder.folder / "text.tkx64").string();
    std::ofstream(file) << "no library";
    for (const std::string& refused :
         {file, file + ".missing", folder.folder.string(), folder.with(HOST_LIBRARY)}) {
        SCOPED_TRACE(refused);
        try {
            tesk::host::the().load(refused);
            ADD_FAILURE();
        } catch (const std::runtime_error& line) {
            EXPECT_EQ(std::string(line.what()).rfind(refused + ": ", 0), 0u) << line.what();
        }
    }
}

TEST(ReferencePage, IsWrittenByteForByte) {
    const package folder;
    const printed first = load(folder.with(PLAIN_OBJECT));
    EXPECT_EQ(first.out, updating);
    EXPECT_EQ(first.err, missing + std::string());
    EXPECT_EQ(contents(folder.page("plain")),
              R"(<?xml version='1.0' encoding='utf-8' standalone='yes'?>


<!-- DO NOT EDIT THIS FILE ... YOU WILL LOSE YOUR WORK -->


<kv7object name='plain' category='first,  second'>

	<digest>Sets <at>gain</at> by <m>go</m> at once</digest>
	<description>Sets <at>gain</at> by <m>go</m> at once. Meets <o>other~</o> &amp; ends.</description>


	<!--METADATA-->

	<metadatalist>
		<metadata name='author'>Its author</metadata>
		<metadata name='tag'>first</metadata>
		<metadata name='tag'>second</metadata>
	</metadatalist>


	<!--ARGUMENTS-->

	<objarglist>

		<objarg name='start' optional='0' type='float'>
			<digest>Where it starts</digest>
			<description>Where it starts.</description>
		</objarg>

		<objarg name='end' optional='1'>
			<digest></digest>
			<description></description>
		</objarg>

	</objarglist>


	<!--MESSAGES-->

	<methodlist>

		<method name='float'>
			<digest>Takes  a&b numbers</digest>
			<description>Takes  a&b numbers. Fast.</description>
		</method>

	</methodlist>


	<!--ATTRIBUTES-->

	<attributelist>

		<attribute name='Flag' get='1' set='1' type='long' size='1' >
			<digest>Ends here</digest>
			<description>Ends here.</description>
		</attribute>

		<attribute name='gain' get='1' set='0' type='float64' size='1' >
			<digest>No point [here</digest>
			<description>No point [here</description>
		</attribute>

		<attribute name='gone' get='1' set='1' type='float64' size='1' >
			<digest></digest>
			<description></description>
		</attribute>

	</attributelist>


	<!--RELATED-->

	<seealsolist>
		<seealso name='other~' />
		<seealso name='third' />
	</seealsolist>


</kv7object>
)");
}

TEST(ReferencePage, IsWrittenAgainOnlyWhenTheObjectIsYounger) {
    const package folder;
    const std::string object = folder.with(PLAIN_OBJECT);
    fs::create_directories(folder.folder / "docs");
    std::ofstream(folder.page("plain")) << "old";
    fs::last_write_time(folder.page("plain"), fs::last_write_time(object));
    const printed equal = load(object);
    EXPECT_EQ(equal.out + equal.err, "") << "an equal date writes nothing";
    EXPECT_EQ(contents(folder.page("plain")), "old");

    const package other;  // a copy is another file, which registers afresh
    const std::string younger = other.with(PLAIN_OBJECT);
    fs::create_directories(other.folder / "docs");
    std::ofstream(other.page("plain")) << "old";
    fs::last_write_time(other.page("plain"),
                        fs::last_write_time(younger) - std::chrono::nanoseconds(1));
    const printed again = load(younger);
    EXPECT_EQ(again.out, updating);
    EXPECT_EQ(again.err, "");
    EXPECT_GT(contents(other.page("plain")).size(), 1000u);
}

TEST(ReferencePage, FailsWithoutHinderingRegistration) {
    {
        SCOPED_TRACE("the object file is not found under the class's name");
        const package folder;
        const printed all = load(folder.with(PLAIN_OBJECT, "renamed.tkx64"));
        EXPECT_EQ(all.out, "");
        EXPECT_EQ(all.err.rfind(std::string(missing) + "DOC UPDATE ERROR: ", 0), 0u) << all.err;
    }
    {
        SCOPED_TRACE("a file stands where the folder should");
        const package folder;
        std::ofstream(folder.folder / "docs") << "a file";
        const printed all = load(folder.with(PLAIN_OBJECT));
        EXPECT_EQ(all.out, updating);
        EXPECT_EQ(all.err, "error trying to create folder\n" + std::string(missing) +
                               "failed to open file stream for refpage\n");
    }
    {
        SCOPED_TRACE("a folder stands where the page should");
        const package folder;
        const std::string object = folder.with(PLAIN_OBJECT);
        fs::create_directories(folder.page("plain"));
        // Of the file, for not every C library can set a folder's.
        fs::last_write_time(object,
                            fs::last_write_time(folder.page("plain")) + std::chrono::hours(1));
        EXPECT_EQ(load(object).err, "failed to open file stream for refpage\n");
    }
    {
        SCOPED_TRACE("the class wants none");
        const package folder;
        const printed all = load(folder.with(EXAMPLE_OBJECT));
        EXPECT_EQ(all.out, "");
        EXPECT_FALSE(fs::exists(folder.page("example~")));
    }
    EXPECT_NO_THROW(tesk::host::the().described("plain"));
    EXPECT_NO_THROW(tesk::host::the().described("example~"));
}
