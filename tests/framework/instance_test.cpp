// The life of an instance: what it is made from, what reaches it, and what it leaves behind.
#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "tests/framework/objects.h"

namespace {

// Calls a method as the host would, with an argument list of its own.
template <class Result = void, class... Arguments>
Result call(tesk::instance& box, const char* name, Arguments... values) {
    const tesk_method method = box.method(name);
    if (method == nullptr) throw std::runtime_error(std::string("no method ") + name);
    return reinterpret_cast<Result (*)(void*, Arguments...)>(method)(box.object(), values...);
}

}  // namespace

TEST(Instance, TakesArgumentsThenSetUpThenTheAttributesOfItsBox) {
    const example_box made("example~ 3 4 5 @gain 0.25 @shape square");
    EXPECT_EQ(made.born, (lines{"gain 0.5", "set_shape 2", "steps 0.0", "first 3", "setup 3 4 5",
                                "gain 0.25"}));
    EXPECT_EQ(made.box->get_number("shape"), 1.0);
    EXPECT_EQ(made.box->notifications(), lines{"modified"}) << "the default of \"value\"";
    EXPECT_EQ(static_cast<tesk_signal_object*>(made.box->object())->flags & 1, 1);
    EXPECT_EQ(made.box->assist(false, 1), "right in");
    EXPECT_EQ(made.box->assist(true, 1), "count out");
}

TEST(Instance, ThatFailsToBeMadeReportsWhyAndLeavesNothing) {
    const example_box made;
    const tesk::live_memory before = made.host.live();
    const std::tuple<const char*, double, const char*> rows[] = {
        {"example~", 11025.0, "constructor: no"},
        {"example~ refuse", 44100.0, "first: no"},
        {"example~ 1 refuse", 44100.0, "setup: no"},
        {"nothing~", 44100.0, "nothing~: no such object"},
    };
    for (const auto& [text, rate, error] : rows) {
        made.host.set_defaults(rate, 64);
        try {
            made.host.make(text);
            ADD_FAILURE() << text << " was made";
        } catch (const std::runtime_error& refusal) {
            EXPECT_PRED_FORMAT2(testing::IsSubstring, error, refusal.what());
        }
        EXPECT_EQ(made.host.live(), before);
    }
}

TEST(Instance, HoldsHostMemoryOnlyWhileItLives) {
    example_box made;
    int64_t count = 0;
    tesk_atom* values = nullptr;
    const tesk::live_memory alive = made.host.live();
    EXPECT_EQ(object_attr_getvalueof(made.box->object(), gensym("value"), &count, &values), 0);
    ASSERT_EQ(count, 2);
    const tesk_atom* const same = values;
    made.box->send("value 8 9");
    object_attr_getvalueof(made.box->object(), gensym("value"), &count, &values);
    EXPECT_EQ(values, same) << "an array of the right size is used again";
    EXPECT_EQ(values[1].value.as_float, 9.0);
    object_attr_getvalueof(made.box->object(), gensym("gain"), &count, &values);
    EXPECT_EQ(count, 1);
    sysmem_freeptr(values);
    EXPECT_EQ(made.host.live(), alive);

    made.box.reset();
    const tesk::live_memory before = made.host.live();
    EXPECT_NE(alive, before);
    made.host.make("example~ 1 @steps 2")->get("value");
    EXPECT_EQ(made.host.live(), before);
    void* const saved = made.host.new_dictionary("saved");
    made.host.bind("#D", saved);
    const tesk::live_memory with_saved = made.host.live();
    const auto box = made.host.make("example~");
    EXPECT_EQ(made.host.live().dictionaries, with_saved.dictionaries) << "takes the saved one";
    made.host.bind("#D", nullptr);
    box->free();
    EXPECT_EQ(made.host.live(), with_saved) << "and leaves it to the host";
    made.host.free_dictionary(saved);
}

TEST(Message, ReachesTheObjectWithItsArgumentsAsAtomsAndAnswersTheHost) {
    const example_box made;
    tesk::instance& box = *made.box;
    void* const self = box.object();
    void* const dictionary = made.host.new_dictionary("named");
    tesk_symbol* const word = gensym("word");
    for (const char* text : {"bang", "5", "0.5", "here 4", "unknown 1 \"two words\"",
                             "unknown refuse", "dictionary named"})
        EXPECT_TRUE(box.send(text, 1)) << text;
    EXPECT_EQ(made.said(),
              (lines{"bang ", "int 5", "number 0.5", "here 4 1", "anything unknown 1 \"two words\"",
                     "anything: no", "dictionary <object>"}));
    EXPECT_EQ(made.host.live().dictionaries, 2) << "its own and the named one, retained no more";

    for (const char* name : {"dblclick", "edclose", "okclose", "loadbang"}) call(box, name);
    for (const char* name : {"paint", "focusgained", "focuslost", "fileusage"})
        call(box, name, self);
    call(box, "dspstate", INT64_C(1));
    call(box, "appendtodictionary", dictionary);
    call(box, "patchlineupdate", self, INT64_C(1), self, INT64_C(2), self, INT64_C(3));
    reinterpret_cast<void (*)(void*, tesk_symbol*, ...)>(box.method("words"))(
        self, gensym("words"), "one", "2", static_cast<const char*>(nullptr));
    EXPECT_EQ(call<int64_t>(box, "notify", word, word, self, self), 7);
    EXPECT_EQ(call<int64_t>(box, "key", self, INT64_C(1), INT64_C(2), INT64_C(3)), 0)
        << "an empty result";
    EXPECT_EQ(
        made.said(),
        (lines{"dblclick ", "edclose ", "okclose ", "loadbang ", "paint <object> <object>",
               "focusgained <object> <object>", "focuslost <object> <object>", "fileusage <object>",
               "dspstate 1", "savestate <object>",
               "patchlineupdate <object> <object> 1 <object> 2 <object> 3", "words one \"2\"",
               "notify <object> word word <object> <object>", "key <object> <object> 1 2 3"}));
    EXPECT_EQ(dictobj_findregistered_retain(gensym("named")), dictionary);
    made.host.free_dictionary(dictionary);
    EXPECT_EQ(made.host.live().dictionaries, 2) << "retained still";
    dictobj_release(dictionary);
    EXPECT_EQ(made.host.live().dictionaries, 1);

    for (const char* name : {"mousedragdelta", "mousedoubleclick"})
        call(box, name, self, tesk_point{2, 3}, INT64_C(16));
    call(box, "mousewheel", self, tesk_point{2, 3}, INT64_C(16), 0.5, -0.5);
    EXPECT_EQ(made.said(),
              (lines{"mousedragdelta 2.0 3.0 16 100.0 0 1", "mousedoubleclick 2.0 3.0 16 100.0 0 1",
                     "mousewheel 2.0 3.0 16 100.0 0 1 0.5 -0.5"}));
    const tesk_touch finger{4, {7, 8}, 0, 0};
    for (const std::string name :
         {"mouseenter", "mouseleave", "mousedown", "mouseup", "mousemove", "mousedrag"}) {
        call(box, ("mt_" + name).c_str(), self, &finger);
        EXPECT_EQ(made.said(), lines{name + " 4 7.0"});
    }

    EXPECT_EQ(call<void*>(box, "oksize", self), self);
    int64_t playing = 0, looping = 0;
    double position = 0;
    call(box, "getplaystate", &playing, &position, &looping);
    EXPECT_EQ(std::tuple(playing, position, looping), std::tuple(1, 0.5, 2));
    tesk::atom_list summands = tesk::atoms_of_text("2 3");
    tesk_atom result{};
    call(box, "sum", gensym("sum"), INT64_C(2), summands.data(), &result);
    EXPECT_EQ(atom_getlong(&result), 5);
    made.said();
    call(box, "sum", gensym("sum"), INT64_C(1), summands.data(), &result);
    EXPECT_EQ(made.said().size(), 1u) << "an exception ends in the error channel";
    EXPECT_EQ(atom_getlong(&result), 5);
}

TEST(Message, ThatCannotBeIsRefusedWithALineThatNamesIt) {
    const package folder;
    tesk::host& host = tesk::host::the();
    host.load(folder.with(PLAIN_OBJECT));
    const auto box = host.make("plain");
    EXPECT_TRUE(box->send("7", 1)) << "integers go through \"float\"";
    EXPECT_EQ(host.take_errors(), lines{"plain: float 7 at 0"}) << "one inlet is inlet 0";
    const std::pair<const char*, std::string> rows[] = {
        {"mousedown 1", "mousedown is a private message"},
        {"dsp64", "dsp64 is a private message"},
        {"Flag 1", "no message or attribute named Flag"},
        {"float", "float needs a value"},
        {"", "empty message"},
        {"x \"a\"b", "message not understood: no blank after a closing quote at character 6"},
    };
    for (const auto& [text, error] : rows) {
        EXPECT_FALSE(box->send(text)) << text;
        EXPECT_EQ(host.take_errors(), lines{"plain: " + error});
    }
}

TEST(Attribute, StoresWhatItsTypeMakesOfAValueAndPresetsTakeThirteen) {
    const example_box made;
    tesk::instance& box = *made.box;
    const std::tuple<const char*, const char*, const char*> rows[] = {
        {"gain 7.5", "gain", "7.5"},  // outside its range: stored unchanged
        {"gain", "gain", "7.5"},      // no value changes nothing
        {"value 1 2.5 word", "value", "1.0 2.5 0.0"},
        {"locked 0", "locked", "1"},  // read-only
        {"shape \"quite flat\"", "shape", "2"},
        {"shape -1", "shape", "0"},
        {"shape 7", "shape", "2"},
        {"shape 1.75", "shape", "1"},
        {"set_shape a", "set_shape", "0"},  // the host gives the index
        {"word b", "word", "1"},
        {"word d", "word", "1"},  // no such name
        {"fontname 3", "fontname", "9.0"},
        {"secret 4", "secret", "4.0"},
    };
    for (const auto& [message, attribute, result] : rows) {
        EXPECT_TRUE(box.send(message)) << message;
        EXPECT_EQ(tesk::text_of_atoms(box.get(attribute)), result) << message;
    }
    EXPECT_EQ(made.said(), (lines{"gain 7.5", "set_shape 0"})) << "a setter runs once a value";
    EXPECT_FALSE(box.send("shape oval"));
    EXPECT_FALSE(box.set("value", std::vector<double>(65536)));
    EXPECT_FALSE(box.set("missing", 1.0));
    EXPECT_EQ(made.said(),
              (lines{"shape: no value named oval", "value: 65536 values, at most 65535",
                     "no attribute named missing"}));
    EXPECT_TRUE(std::isnan(box.get_number("missing")));

    for (const std::size_t values : {13U, 14U}) {
        box.set("value", std::vector<double>(values, 2.0));
        made.said();
        EXPECT_EQ(made.host.store_preset(),
                  lines{"example~ value 2.0 2.0 2.0 2.0 2.0 2.0 2.0 2.0 2.0 2.0 2.0 2.0 2.0"});
        EXPECT_EQ(made.said().size(), values - 13) << "a preset takes 13; a line tells";
    }
    call(box, "preset");
    EXPECT_TRUE(made.said().empty()) << "without a preset under way nothing happens";
}

TEST(Signal, RunsBetweenSetUpAndFree) {
    const example_box made;
    tesk::instance& box = *made.box;
    std::vector<double> left(16, 1.0), right(16, 0.25), sum(16, 9.0), calls(16, 9.0);
    const double* const in[] = {left.data(), right.data()};
    double* const out[] = {sum.data(), calls.data()};
    EXPECT_FALSE(box.run(in, out, 16)) << "before \"dsp64\"";
    EXPECT_EQ(sum[15], 0.0);
    EXPECT_TRUE(box.prepare(48000.0, 16, {1, 0, 1, 0}));
    EXPECT_EQ(made.said(), lines{"dspsetup 48000.0 16 1 0 1 0"}) << "connections, inlets first";
    EXPECT_TRUE(box.run(in, out, 16));
    EXPECT_TRUE(box.run(in, out, 8));
    EXPECT_EQ(sum[15], 1.25);
    EXPECT_EQ(calls[7], 2.0);
    EXPECT_EQ(calls[8], 1.0);
    box.free();
    EXPECT_FALSE(box.run(in, out, 16));
    EXPECT_FALSE(box.prepare(48000.0, 16));
    EXPECT_FALSE(box.set("gain", 1.0));
    EXPECT_TRUE(box.get("gain").empty());
    EXPECT_TRUE(made.said().empty());
}
