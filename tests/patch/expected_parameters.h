// Names, defaults and displays of every parameter, as users read them.
#pragma once

#include <algorithm>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

/// Displays at 0, 0.3, 0.77 and 1, separated by '|'; "%" is a plain percentage, "+%" a signed one,
/// "t" a time, \261 a plus-minus sign. What is not listed has no name, the default 0 and a plain
/// percentage.
struct Expected {
    int index;
    std::string name;
    float initial;
    std::string_view displays;
};

/// Parameters that share default and displays: from one index to another, or several told singly.
struct Indices : std::vector<int> {
    Indices(int index) : vector{index} {}
    Indices(std::initializer_list<int> list) : vector{list} {}
};
inline Indices range(int first, int last) {
    Indices all{};
    for (int i = first; i <= last; ++i) all.push_back(i);
    return all;
}

/// The names of several stand between '|'; a single one is that of all, '#' counting them from 1.
struct Family {
    Indices indices;
    std::string_view names;
    float initial;
    std::string_view displays;
};

inline std::vector<Expected> listed(std::initializer_list<Family> families) {
    std::vector<Expected> all;
    for (const Family& family : families) {
        std::string_view rest = family.names;
        for (std::size_t i = 0; i < family.indices.size(); ++i) {
            std::string name{rest.substr(0, rest.find('|'))};
            if (const auto at = name.find('#'); at != name.npos)
                name.replace(at, 1, std::to_string(i + 1));
            if (rest.find('|') != rest.npos) rest.remove_prefix(rest.find('|') + 1);
            all.push_back({family.indices[i], name, family.initial, family.displays});
        }
    }
    std::sort(all.begin(), all.end(),
              [](const Expected& a, const Expected& b) { return a.index < b.index; });
    return all;
}

inline const std::vector<Expected> patchParameters = listed({
    {0, "Mute", 0.0f, "-|-|MUTE|MUTE"},
    {1, "ECO Mode", 0.5f, "ECO|ECO|XXL|XXL"},
    {{2, 17, 18}, "MIDI Link|Arpeggiator|Latch", 0.0f, "OFF|OFF|ON|ON"},
    {3, "Glide", 0.4f, "Off|Default|On|On"},
    {{14, 15, 103, 105, 107, 109}, "", 0.5f, "%"},
    {19, "Mode", 0.0f, "Up|Random| | "},
    {20, "Octaves", 0.0f, "1|2|4|4"},
    {21, "Steps", 0.0f, "Default|5|13|16"},
    {22, "Sync", 0.0f, "First Note|Beat Sync||"},
    {23, "Rate", 0.8f, "8/4|4/4T|1/16|1/64"},
    {{24, 174, 249}, "Gate", 0.5f, "%"},
    {25, "Swing", 0.0f, "50.00 %|60.00 %|75.67 %|83.33 %"},
    {{26, 27}, "Bank|Prog", 0.0f, " | | | "},
    {28, "Transpose", 0.5f, "-24|-10|+13|+24"},
    {29, "Phrase Lo Key", 0.415f, "C-2|D1|D#6|OFF"},
    {30, "Phrase Hi Key", 1.0f, "C-2|D1|D#6|OFF"},
    {33, "Scale", 0.0f, "OFF|D|G#|B"},
    {49, "Key Low", 0.0f, "C-2|D1|D6|G8"},
    {50, "Key High", 1.0f, "C-2|D1|D6|G8"},
    {51, "Key Xfade", 0.0f, "0|11|75|127"},
    {52, "Vel Min", 0.0f, "0|38|98|127"},
    {53, "Vel Max", 1.0f, "0|38|98|127"},
    {54, "Vel Xfade", 0.0f, "0|11|75|127"},
    {55, "Transpose", 0.5f, "-36|-14|+19|+36"},
    {56, "Fine Tune", 0.5f, "-100.0|-40.0|+54.0|+100.0"},
    {57, "Mono/Poly", 0.5f, "Poly|Poly|Mono|Mono"},
    {58, "Max Voices", 0.5f, "1|20|50|64"},
    {59, "Level Trim", 0.7071f, "-oo|-14.9 dB|+1.5 dB|+6.0 dB"},
    {60, "Pan", 0.5f, "L64|L26|R35|R64"},
    {61, "Output", 0.05f, "OFF|9|25|32"},
    {62, "FX Sends", 0.0f, "Global|Global|Patch|Patch"},
    {range(63, 66), "FX Send #", 0.0f, "-oo|-14.9 dB|+1.5 dB|+6.0 dB"},
    {67, "Level", 0.0f, "-oo|-14.9 dB|+1.5 dB|+6.0 dB"},
    {68, "Patch Type", 0.0f, "%"},
    {69, "Redamper", 0.0f, "OFF|OFF|OFF|OFF"},
    {70, "LFO Rate Ctl", 0.18f, "- - -|- 2 -|- 2 3|1 2 3"},
    {71, "Piano Character", 0.0f, "-1.50|-0.30|+1.58|+2.50"},
    {72, "Piano Model", 0.0f, "Model 1|Model 1|Model 2|Model 2"},
    {{73, 74}, "PB Range|PB Down", 0.15f, "0|4|12|24"},
    {75, "Piano Reso", 0.0f, "Off|Off|Always|Always"},
    {{76, 80}, "Bank", 0.0f, "|||"},
    {{77, 81}, "Scale", 1.0f, "|||"},
    {{78, 82}, "Root", 0.5f, "C2|G2|F#3|C4"},
    {83, "Depth", 0.5f, "-400.0 %|-64.0 %|+116.6 %|+400.0 %"},
    {84, "Piano Mode", 0.0f, "ECO|ECO|XXL|XXL"},
    {85, "LFO1 Wave", 0.16f, "OFF|Sawtooth|OFF|OFF"},
    {{86, 90}, "Sync", 0.0f, "Off|First Note|Tempo + Note|Tempo + Beat"},
    {87, "Rate", 0.67f, "30.00 sec|3.90 sec|6.28 Hz|30.00 Hz"},
    {{88, 92}, "Phase", 0.0f, "0\xB0|120\xB0|308\xB0|Random"},
    {89, "LFO2 Wave", 0.28f, "OFF|Sawtooth|OFF|OFF"},
    {91, "Rate", 1.0f, "30.00 sec|3.90 sec|6.28 Hz|30.00 Hz"},
    {{112, 115, 118, 138, 141, 123}, "Knob #", 0.0f, "(none)|Reso|Glide|Filt Sus"},
    {{113, 116, 119, 139, 142, 124}, "ofs", 0.0f, "%"},
    {{114, 117, 120, 140, 143, 125}, "rng", 0.0f, "%"},
    {range(126, 130), "GM Wave|GM LFO Rate|GM Cutoff|GM Reso|GM F.Env", 0.5f, "%"},
    {range(131, 135), "GM F.Att|GM F.Dec|GM Attack|GM Decay|GM Release", 0.5f, "%"},
    {148, "Glide Time", 0.5f, "%"},
    {149, "Current Scene", 0.0f, "-|19|49|64"},
    {150, "Scene MIDI Select", 0.0f, "OFF|OFF|ON|ON"},
    {151, "Scene Root Note", 1.0f, "C-2|D1|D#6|OFF"},
    {{172, 247}, "Note 1|Note 16", 0.5f, "-24|-10|+13|+24"},
    {{173, 248}, "Vel", 0.5f, "0 %|60 %|154 %|200 %"},
    {{175, 176, 250, 251}, "Seq1|Seq2|Seq1|Seq2", 0.5f, "-100|-40|+54|+100"},
});

inline const std::vector<Expected> commonParameters = listed({
    {0, "Mute", 1.0f, "PLAY|PLAY|MUTE|MUTE"},
    {1, "Element Type", 0.0f, "Effect|FM| | "},
    {2, "Receive CC/EE", 1.0f, "OFF|OFF|ON|ON"},
    {3, "ECO Mode", 1.0f, "(ECO)|(ECO)|XXL|XXL"},
    {{4, 5}, "Mode", 0.67f, "Positive|Negative|Switch|Switch"},
    {{6, 8, 10, 12}, "Dest 1|Dest 2|Dest 1|Dest 2", 0.0f, "OFF|Sync| 6 Src| 16 Depth"},
    {{7, 9, 11, 13}, "Depth 1|Depth 2|Depth 1|Depth 2", 0.5f, "-100.0|-40.0|+54.0|+100.0"},
    {{14, 15}, "Knob (test only)", 0.5f, "%"},
    {16, "OFF", 0.0f, "%"},
    {49, "Keyrange Low", 0.0f, "C-2|D1|D6|G8"},
    {50, "Keyrange High", 1.0f, "C-2|D1|D6|G8"},
    {51, "Keyrange X-fade", 0.0f, "0|11|75|127"},
    {52, "Velocity Low", 0.0f, "0|38|98|127"},
    {53, "Velocity High", 1.0f, "0|38|98|127"},
    {54, "Velocity X-fade", 0.0f, "0|11|75|127"},
    {55, "Trigger Condition", 0.0f, "None|Sustain Down||"},
    {56, "Mute Condition", 0.0f, "None|None|Mute Group 8|Mute Group 11"},
    {57, "Mono Mode", 0.0f, "Off (Poly)|Lowest Note|First Note|Last Note"},
    {58, "Max Voices", 1.0f, "1|20|50|64"},
    {59, "Envelope Mode", 0.0f,
     "Digital (Restart)|Digital (Restart)|Analog (Resume)|Analog (Resume)"},
    {60, "Mono Unison Voices", 0.0f, "OFF|3 voices|7 voices|8 voices"},
    {61, "Unison Voice Detune", 0.5f, "0.0 c|2.7 c|45.7 c|100.0 c"},
    {62, "Unison Voice Pan", 0.5f, "%"},
    {63, "Note Delay", 0.0f, "Off|Tempo| | "},
    {64, "Delay Time", 0.0f, "t"},
    {65, "Velocity to Delay", 0.5f, "+%"},
    {{66, 67, 69}, "Random Delay|Sample Startpoint|Random Startpoint", 0.0f, "%"},
    {68, "Velocity to Startpoint", 0.5f, "+%"},
    {70, "Octave", 0.5f, "-4|-2|+2|+4"},
    {71, "Semitones", 0.5f, "-12|-5|+6|+12"},
    {72, "Cents", 0.5f, "-50.0|-8.0|+14.6|+50.0"},
    {73, "Pitch Keytrack", 0.5f, "-1.00|+0.20|+2.08|+3.00"},
    {74, "Random Pitch", 0.0f, "0.000 cents|0.097 cents|4.218 cents|12.000 cents"},
    {75, "Patch Pitch Bend", 1.0f, "Ignore|Ignore|Receive|Receive"},
    {76, "Glide Mode", 0.0f, "Off|Bend Only|On|On"},
    {77, "Glide Type", 0.0f, "Digital (Restart)|Digital (Restart)|Analog (Resume)|Analog (Resume)"},
    {78, "Glide Time", 0.25f, "t"},
    {{79, 81}, "Velocity to Glide Time|Velocity to Bend", 0.5f, "+%"},
    {{80, 82}, "Attack Bend|Release Bend", 0.5f, "-36.00 semi|-5.76 semi|+10.50 semi|+36.00 semi"},
    {{83, 84},
     "Mono Legato Retrig|Mono Release Retrig",
     1.0f,
     "Start New Voice|All Modulation|Filt Env|New Pitch Only"},
    {85, "(Poly) LFO3 Wave", 0.16f, "OFF|Sawtooth|OFF|OFF"},
    {86, "Sync", 0.5f, "Off|First Note|Tempo + Note|Tempo + Beat"},
    {87, "Rate", 0.75f, "30.00 sec|3.90 sec|6.28 Hz|30.00 Hz"},
    {88, "Phase", 0.0f, "0\xB0|120\xB0|308\xB0|Random"},
    {{89, 91, 95, 97}, "Level 1|Level 2|Sustain Level|Level 5", 0.5f, "+%"},
    {{99, 100}, "Key to Waveform|Vel to Waveform", 0.5f, "+%"},
    {90, "Time 1", 0.0f, "t"},
    {92, "Time 2", 0.25f, "t"},
    {93, "Level 3", 1.0f, "+%"},
    {{94, 96}, "Time 3|Release Time", 0.5f, "t"},
    {98, "Wave", 0.0f, "%"},
    {{101, 109}, "Random Waveform|Random Cutoff", 0.0f, "%"},
    {103, "Mode", 0.16f, "Off|Band 12|(12)|(15)"},
    {104, "Resonance", 0.12f, "%"},
    {{105, 120}, "Vel to Resonance|F. Dec/Rel Keytrack", 0.5f, "+%"},
    {106, "Cutoff", 1.0f, "%"},
    {107, "Key", 0.5f, "-100 %|+20 %|+208 %|+300 %"},
    {{108, 110, 114}, "Velocity|Env2|F. Fade Up/Down", 0.5f, "+%"},
    {{111, 126}, "F. Attack|Attack", 0.0f, "t"},
    {{112, 127}, "F. Decay|Decay", 0.5f, "t"},
    {113, "F. Sustain", 0.25f, "%"},
    {115, "F. Release", 0.5f, "t"},
    {range(117, 119), "F. Velocity to Level|F. Velocity to Attack|F. Velocity to Decay", 0.5f,
     "+%"},
    {range(123, 125), "Tempo to Env Rates|Voice Mute Fadeout|Note-on Click", 0.0f, "%"},
    {{116, 131}, "F. Decay Curve|Decay Curve", 0.0f, "%"},
    {128, "Sustain", 1.0f, "%"},
    {{129, 135, 137}, "Fade Up/Down|Decay Keytrack|Release Keytrack", 0.5f, "+%"},
    {130, "Release", 0.1f, "t"},
    {132, "Velocity to Level", 0.875f, "+%"},
    {{133, 134}, "Velocity to Attack|Velocity to Decay", 0.5f, "+%"},
    {138, "Receive Velocity", 1.0f, "Amp Env Only|Amp Env Only|On|On"},
    {139, "Output Level", 0.5f, "-oo|-8.9 dB|+7.5 dB|+12.0 dB"},
    {140, "Output Pan", 0.5f, "L64|L26|R35|R64"},
    {{141, 143}, "Pan Keytrack|Alternating Pan", 0.5f, "+%"},
    {142, "Random Pan", 0.0f, "%"},
    {144, "Priority", 0.5f, "Low|Low|High|High"},
    {{145, 146}, "1.  Source|2.  Source", 0.0f, "0|Knob 2|Knob 6|7"},
    {{147, 149}, "Receive AT|Receive MW", 1.0f, "OFF|OFF|ON|ON"},
    {148, "Undamped >", 0.0f, "OFF|D1|D#6|OFF"},
    {{172, 247}, " 1 Src| 16 Src", 0.0f, "|Seq 1||"},
    {{173, 248}, " 1 Mod| 16 Mod", 0.0f, "|Seq 1|Peak Hold|"},
    {{174, 249}, " 1 Param| 16 Param", 0.5f, "-100.0 %|-40.0 %|+54.0 %|+100.0 %"},
    {{175, 250}, " 1 Dest| 16 Dest", 0.0f, "|Reso||"},
    {{176, 251}, " 1 Depth| 16 Depth", 0.5f, "-100.0 %|-16.0 %|+29.2 %|+100.0 %"},
});

inline const std::vector<Expected> effectBlock = listed({
    {19, "FX", 1.0f, "Reverb|||"},
    {20, "Aux Out", 0.0f, "Off|Out +2|Out +10|Out +13"},
    {range(21, 24), "FX Send #", 0.0f, "-oo|-8.9 dB|+7.5 dB|+12.0 dB"},
    {range(25, 36), "", 0.0f, "|||"},
});

inline const std::vector<Expected> drawbarBlock = listed({
    {20, "Perc Trig", 0.0f, "Normal|+ Vel|Poly|Poly"},
    {21, "Percussion", 0.0f, "Off|Off|On|On"},
    {22, "Perc Level", 0.0f, "Soft|Soft|Loud|Loud"},
    {23, "Perc Decay", 0.0f, "Slow|Slow|Fast|Fast"},
    {24, "Perc Harm", 0.0f, "2nd|2nd|3rd|3rd"},
    {{25, 26, 28, 29, 30, 31, 32, 33},
     "16    |5 1/3|4     |2 2/3|2     |1 3/5|1 1/3|1     ",
     0.0f,
     "0|2|6|8"},
    {27, "8     ", 1.0f, "0|2|6|8"},
    {range(34, 36), "Key Click|Click Length|Off Click", 0.5f, "%"},
});

inline const std::vector<Expected> sampleBlock = listed({
    {18, "Bank", 0.08f, "|||"},
    {19, "Wave", 0.0f, "|||"},
    {20, "Force Mono", 0.0f, "OFF|OFF|ON|ON"},
    {22, "Formant", 0.5f, "%"},
    {23, "Velocity", 0.5f, "-12.0|-4.8|+6.5|+12.0"},
    {24, "Random", 0.0f, "\2610.0|\2613.6|\2619.2|\26112.0"},
    {range(28, 30), "Leg>Start|Leg>Attack|Leg>F.Attack", 0.0f, "%"},
    {33, "Vel Offs", 0.5f, "-128|-51|+69|+128"},
    {34, "Vel Scale", 0.5f, "-100 %|+20 %|+208 %|+300 %"},
    {35, "Vel Rnd", 0.0f, "\2610|\26119|\26149|\26164"},
});

inline const std::vector<Expected> wavetableBlock = listed({
    {{18, 19}, "Bank|Wave", 0.0f, "|||"},
    {21, "Sync", 0.0f, "OFF|OFF|ON|ON"},
    {22, "Semi", 0.5f, "-24|-10|+13|+24"},
    {23, "Cent", 0.5f, "-50.0|-8.0|+14.6|+50.0"},
    {24, "Wavetable Aliasing", 0.0f, "%"},
    {28, "Osc2 Wave", 0.0f, "Saw|Tri|Tab x Tri|Tab x Tri"},
    {29, "Osc2 Mix", 0.0f, "%"},
});

inline const std::vector<Expected> fmBlock = listed({
    {17, "Coarse", 0.26f, "0.0|3.5|14.5|32.0"},
    {{18, 26}, "Fine", 0.0f, "0.0000|0.0450|0.2964|0.5000"},
    {19, "Thru Mix", 0.0f, "%"},
    {{20, 21, 28}, "Depth|Vel Sens|Depth", 1.0f, "%"},
    {{22, 24, 30, 32}, "Lo Scale|Hi Scale|Lo Scale|Hi Scale", 0.5f, "%"},
    {{23, 31}, "Breakpoint", 0.5f, "C-2|D1|D6|G8"},
    {25, "Coarse", 0.5f, "0.0|3.5|14.5|32.0"},
    {27, "Keytrack", 1.0f, "%"},
    {29, "Vel Sens", 0.0f, "%"},
    {33, "Env Rate", 0.2f, "t"},
    {34, "Env Level", 0.0f, "To 0 %|To 60 %|From 46 %|From 0 %"},
    {35, "LF Carrier", 0.0f, "OFF|0.41 Hz|17.58 Hz|50.00 Hz"},
    {36, "Vel->Decay", 0.5f, "%"},
});

inline const std::vector<Expected> analogBlock = listed({
    {17, "Filter", 1.0f, "Digital|Digital|Analog|Analog"},
    {18, "Osc1 Phase", 0.0f, "Normal|Normal|Inverted|Inverted"},
    {{19, 27}, "Wave|Osc2 Wave", 0.0f, "Saw Sync|Sqr PWM|Wavetable|Wavetable"},
    {20, "Highpass Filter", 0.1f, "%"},
    {21, "Osc1 Mix", 1.0f, "%"},
    {22, "Semi", 0.5f, "-24|-10|+13|+24"},
    {23, "Cent", 0.5f, "-50.0|-8.0|+14.6|+50.0"},
    {24, "Minimum Pulse Width", 0.1f, "0.1 %|3.1 %|7.8 %|10.1 %"},
    {25, "Osc2 Semi", 0.5f, "-24|-10|+13|+24"},
    {26, "Osc2 Cent", 0.5f, "-50.0|-8.0|+14.6|+50.0"},
    {28, "Osc3 Wave", 0.0f, "Saw|Tri|Tri|Tri"},
    {range(29, 33), "Osc3 Mix|Sub Osc|Noise|Osc3 Filter Mod|Osc2 Mix", 0.0f, "%"},
    {{35, 36}, "Filt Dist|Wavetable Aliasing", 0.0f, "%"},
    {34, "Wavetable", 0.0f, "|||"},
    {37, "Osc3 Mute", 0.0f, "OFF|OFF|ON|ON"},
});
