// stratovane-content: lists, checks, makes and takes apart what a content folder holds.
#include <CLI/CLI.hpp>
#include <iostream>

#include "bank_spec.h"
#include "commands.h"
#include "output_file.h"
#include "patch_json.h"

namespace {

using namespace stratovane::content_tool;

struct Arguments {
    std::string input, mapping, output;
    std::vector<std::string> words;
    bool all = false;
};

CLI::App& command(CLI::App& above, const char* name, const char* what) {
    return *above.add_subcommand(name, what);
}
void takes(CLI::App& app, const char* what, Arguments& a) {
    app.add_option(what, a.input)->required();
}
void makes(CLI::App& app, const char* what, Arguments& a) {
    app.add_option("-o,--output", a.output, what)->required();
}

/// Declares everything; the callbacks do what was chosen.
void declare(CLI::App& app, Arguments& a, Exit& exit) {
    app.require_subcommand(1);

    CLI::App& list = command(app, "list", "Lists a content folder");
    takes(list, "DIR", a);
    list.callback([&] { listContent(a.input); });

    CLI::App& check = command(app, "check", "Reads every file and tells what is wrong");
    takes(check, "DIR", a);
    check.callback([&] { exit = checkContent(a.input); });

    CLI::App& info = command(app, "info", "Tells what a file holds");
    takes(info, "FILE", a);
    info.callback([&] { showInfo(a.input); });

    CLI::App& find = command(app, "find", "Finds patches by words of their names");
    takes(find, "DIR", a);
    find.add_option("WORDS", a.words)->required();
    find.callback([&] { findPatches(a.input, a.words); });

    CLI::App& bank = command(app, "bank", "Banks of samples, wavetables and drawbars");
    bank.require_subcommand(1);
    CLI::App& bankBuild = command(bank, "build", "Makes a bank of a JSON file and sound files");
    takes(bankBuild, "SPEC.json", a);
    makes(bankBuild, "Bank to write", a);
    bankBuild.callback([&] { buildBank(a.input, a.output); });
    CLI::App& extract = command(bank, "extract", "Takes a bank apart");
    takes(extract, "FILE", a);
    makes(extract, "Folder for bank.json and the sound files", a);
    extract.callback([&] { extractBank(a.input, a.output); });

    CLI::App& patch = command(app, "patch", "Patches as JSON");
    patch.require_subcommand(1);
    CLI::App& show = command(patch, "show", "Shows a patch as JSON");
    takes(show, "FILE", a);
    show.add_option("-o,--output", a.output, "JSON file to write [standard output]");
    show.add_flag("--all", a.all, "Defaults as well");
    show.callback([&] {
        const std::string text = patchJson(a.input, a.all ? Shows::everything : Shows::changes);
        if (a.output.empty())
            std::cout << text;
        else
            writeWhole(a.output, text);
    });
    CLI::App& patchBuild = command(patch, "build", "Makes a patch file of a JSON file");
    takes(patchBuild, "SPEC.json", a);
    makes(patchBuild, "Patch file to write", a);
    patchBuild.callback([&] { buildPatch(a.input, a.output); });

    CLI::App& tuning = command(app, "tuning", "Tunings");
    tuning.require_subcommand(1);
    CLI::App& scala = command(tuning, "from-scala", "Makes a tuning of a Scala scale");
    takes(scala, "FILE.scl", a);
    scala.add_option("FILE.kbm", a.mapping, "Keyboard mapping");
    makes(scala, "Tuning to write", a);
    scala.callback([&] { makeTuning(a.input, a.mapping, a.output); });

    CLI::App& phrase = command(app, "phrase", "Phrases");
    phrase.require_subcommand(1);
    CLI::App& midi = command(phrase, "from-midi", "Makes a phrase of a Standard MIDI File");
    takes(midi, "FILE.mid", a);
    makes(midi, "Phrase to write", a);
    midi.callback([&] { makePhrase(a.input, a.output); });
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app{"Lists, checks, makes and takes apart Stratovane 2 content.",
                 "stratovane-content"};
    Arguments arguments;
    Exit exit = Exit::ok;
    declare(app, arguments, exit);
    try {
        app.parse(argc, argv);
        if (!std::cout.flush()) throw Failure{Exit::output, "standard output cannot be written"};
    } catch (const CLI::CallForHelp&) {
        std::cout << app.help();
    } catch (const CLI::ParseError& error) {
        std::cerr << "stratovane-content: " << error.what() << '\n';
        return static_cast<int>(Exit::usage);
    } catch (const Failure& failure) {
        std::cerr << "stratovane-content: " << failure.what() << '\n';
        return static_cast<int>(failure.exit());
    } catch (const std::bad_alloc&) {
        std::cerr << "stratovane-content: there is not enough memory\n";
        return static_cast<int>(Exit::input);
    }
    return static_cast<int>(exit);
}
