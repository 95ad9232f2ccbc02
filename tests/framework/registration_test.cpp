// What the host sees of a class while it registers, and the page that it leaves behind.
#include <gtest/gtest.h>
#ifndef _WIN32
#include <sys/resource.h>
#endif

#include <cctype>
#include <chrono>
#include <csignal>
#include <iostream>
#include <iterator>
#include <locale>
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

const std::string missing = "file not found\nfailed to get date modified\n";
const std::string updating = "Updating Reference Page for class plain\n";

}  // namespace

// Decimal commas, as a host in many a language has them.
struct commas : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
};

TEST(Registration, IsTheSameCallsInTheSameOrderInAnyLocale) {
    const package folder;
    const std::locale before = std::locale::global(std::locale(std::locale(), new commas));
    load(folder.with(EXAMPLE_OBJECT));
    std::locale::global(before);
    const auto& seen = tesk::host::the().described("example~");
    std::string calls;
    for (std::string line : tesk::host::the().registrations()) {
        for (const std::string start : {"class_addmethod ", "class_attr_addattr_"})
            if (line.starts_with(start)) line.erase(0, start.size());
        line += " ";
        const auto about = [&line](const char* name) { return line.find(name) != line.npos; };
        if (about(" set_shape ") || about(" word ") || about(" steps ") || about(" fontname "))
            continue;
        line.back() = '\n';
        calls += line;
    }
    std::string expected =
        R"(class_new example~ 8,
later 8, later_at 8, here 8, sum 14, words 9, int 1, notify 9, key 9, getplaystate 9, oksize 9, setup 9, bang 0, dblclick 9, edclose 9, okclose 9,
loadbang 9, anything 8, dictionary 3, dspstate 9, paint 9, focusgained 9, focuslost 9, patchlineupdate 9, fileusage 9,
appendtodictionary 9, float 2, mt_mouseenter 9, mt_mouseleave 9, mt_mousedown 9, mt_mouseup 9,
mt_mousemove 9, mt_mousedrag 9, mousedragdelta 9, mousedoubleclick 9, mousewheel 9,
attr_offset_array_new value float64 65535 0x0, class_addattr value, format value label symbol 0 ,
parse value default float64 0 1.0 2.0, atoms value order long 0 0, getvalueof 9, setvalueof 9,
preset 0,
attr_offset_new gain float64 1 0x0, class_addattr gain, format gain label symbol 0 Gain,
parse gain default float64 0 0.5, atoms gain category symbol 0 Levels, atoms gain order long 0 0,
parse gain minimum float64 0 "0", parse gain maximum float64 0 "1.5",
attr_offset_new locked long 1 0x202, class_addattr locked, format locked label symbol 0 Locked,
parse locked style symbol 0 onoff, parse locked default long 0 1, atoms locked order long 0 0,
attr_offset_new secret float64 1 0x200, class_addattr secret, parse secret invisible long 1 1,
format secret label symbol 0 Secret, parse secret default float64 0 0.0,
atoms secret order long 0 0,
attr_offset_array_new tint float64 65535 0x0, class_addattr tint, format tint label symbol 0 Tint,
parse tint defaultname symbol 0 0.250000 0.500000 0.750000 1.000000,
class_parameter_register_default_color tint lcd_bg, atoms tint order long 0 4,
attr_offset_new shape long 1 0x0, class_addattr shape, format shape label symbol 0 ,
parse shape style symbol 0 enumindex, parse shape default long 0 0, atoms shape order long 0 0,
parse shape style symbol 0 enumindex, parse shape enumvals atom 0 "round" "square" "quite flat" ,
parse shape minimum long 0 0, parse shape maximum long 0 2,
dsp64 9, class_dspinit, vrx_attr_offset matrix float64 1 0x8040000, vrx_class_addattr matrix,
vrx_attr_offset_array matrix_list float64 65535 0x8040202, vrx_class_addattr matrix_list, assist 9,
class_register box,
)";
    // A call a line, so that a failure shows which ones differ.
    for (std::size_t comma = 0; (comma = expected.find(',', comma)) != expected.npos; ++comma)
        if (std::isspace(expected[comma + 1]) != 0) expected.replace(comma, 2, "\n");
    EXPECT_EQ(calls, expected);
    EXPECT_EQ(seen.attribute("set_shape")->value_names(), (lines{"a", "b", "c"}));
    EXPECT_EQ(seen.attribute("word")->property("style"), "enum");
    EXPECT_EQ(seen.attribute("word")->value_names(), (lines{"a", "b", "c"}));
    EXPECT_EQ(seen.attribute("fontname")->property("style"), "font");
    EXPECT_FALSE(fs::exists(folder.page("example~"))) << "the class wants none";
}

TEST(Registration, HappensOnceAndWaitsWhileTheHostAsksLibrariesTo) {
    const package folder;
    tesk::host& host = tesk::host::the();
    const tesk::live_memory before = host.live();
    const std::string object = folder.with(PLAIN_OBJECT);
    host.set_library(true);
    EXPECT_THROW(host.load(object), std::runtime_error);
    host.set_library(false);
    void* const self = gensym("tesk")->object;
    host.bind("tesk", nullptr);
    EXPECT_EQ(host.load(object), "plain") << "a host that binds nothing to its name is none";
    host.bind("tesk", self);
    const std::size_t calls = host.registrations().size();
    EXPECT_EQ(host.load(object), "plain");
    EXPECT_EQ(host.registrations().size(), calls);
    // "float" alone takes integers too; without fingers the mouse keeps its names.
    const auto& methods = host.described("plain").methods;
    ASSERT_GE(methods.size(), 3u);
    EXPECT_EQ(methods[0].name + methods[1].name + methods[2].name, "floatintmousedown");
    EXPECT_EQ(host.live(), before) << "the prototype gave everything back";
}

TEST(ReferencePage, IsWrittenByteForByte) {
    const package folder;
    const printed first = load(folder.with(PLAIN_OBJECT));
    EXPECT_EQ(first.out, updating);
    EXPECT_EQ(first.err, missing);
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
    for (const bool younger : {false, true}) {
        SCOPED_TRACE(younger);
        const package folder;  // a copy is another file, which registers afresh
        const std::string object = folder.with(PLAIN_OBJECT);
        fs::create_directories(folder.folder / "docs");
        std::ofstream(folder.page("plain")) << "old";
        fs::last_write_time(folder.page("plain"), fs::last_write_time(object) -
                                                      std::chrono::nanoseconds(younger ? 1 : 0));
        const printed all = load(object);
        EXPECT_EQ(all.out, younger ? updating : "");
        EXPECT_EQ(all.err, "");
        EXPECT_EQ(contents(folder.page("plain")) == "old", !younger);
    }
}

TEST(ReferencePage, FailsWithoutHinderingRegistration) {
    {
        const package folder;
        const printed all = load(folder.with(PLAIN_OBJECT, "renamed.tkx64"));
        EXPECT_EQ(all.out, "") << "no object file of the class's name";
        EXPECT_EQ(all.err.rfind(missing + "DOC UPDATE ERROR: ", 0), 0u) << all.err;
    }
    {
        const package folder;
        std::ofstream(folder.folder / "docs") << "a file where the folder should be";
        const printed all = load(folder.with(PLAIN_OBJECT));
        EXPECT_EQ(all.out, updating);
        EXPECT_EQ(all.err, "error trying to create folder\n" + missing +
                               "failed to open file stream for refpage\n");
        EXPECT_FALSE(fs::exists("/plain.teskref.xml")) << "nor anywhere else";
    }
    {
        const package folder;
        const std::string object = folder.with(PLAIN_OBJECT);
        fs::create_directories(folder.page("plain"));
        // Of the file, for not every C library can set a folder's.
        fs::last_write_time(object,
                            fs::last_write_time(folder.page("plain")) + std::chrono::hours(1));
        EXPECT_EQ(load(object).err, "failed to open file stream for refpage\n")
            << "a folder where the page should be";
    }
    {
        const package folder;
        tesk::host::the().take_errors();
        struct : std::streambuf {
        } broken;  // takes nothing
        std::streambuf* const stream = std::cerr.rdbuf(&broken);
        std::cerr.exceptions(std::ios::badbit);  // as a host may have set it
        testing::internal::CaptureStdout();
        tesk::host::the().load(folder.with(PLAIN_OBJECT));
        testing::internal::GetCapturedStdout();
        std::cerr.exceptions(std::ios::goodbit);
        std::cerr.rdbuf(stream);
        EXPECT_EQ(tesk::host::the().take_errors(),
                  (lines{"file not found", "failed to get date modified"}))
            << "a stream that throws loses no line";
    }
    EXPECT_NO_THROW(tesk::host::the().described("plain"));
}

#ifndef _WIN32
TEST(ReferencePage, OnAFullDiskTheOldOneStays) {
    const package folder;
    const std::string object = folder.with(PLAIN_OBJECT);
    fs::create_directories(folder.folder / "docs");
    std::ofstream(folder.page("plain")) << "old";
    fs::last_write_time(folder.page("plain"),
                        fs::last_write_time(object) - std::chrono::seconds(1));
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit full{100, before.rlim_max};  // bytes a file
    setrlimit(RLIMIT_FSIZE, &full);
    const printed all = load(object);
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(all.err, "failed to write the refpage\n");
    EXPECT_EQ(contents(folder.page("plain")), "old");
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.folder / "docs"), {}), 1)
        << "nothing half-written beside it";
}
#endif
