#include "corvanlux/analyzer/DecoderSettings.h"

#include <QtTest>

#include <memory>
#include <string>

namespace {

enum class Parity { None = 0, Odd = 1, Even = 2 };

class SampleSettings : public lux::Settings {
public:
    SampleSettings() { addExport(1, "Bytes", "Binary file", "bin"); }
    lux::IntegerSetting baudrate{*this, "baudrate", "Bit rate", "0 finds it", {0, 1000000}, 100000};
    lux::ChannelSetting rx{*this, "rx", "RX", "The line"};
    lux::ChannelSetting tx{*this, "tx", "TX", "The other line", lux::Presence::Optional};
    lux::ChoiceSetting<Parity> parity{*this,
                                      "parity",
                                      "Parity",
                                      "How bits are checked",
                                      {{int(Parity::None), "none", "No parity"},
                                       {int(Parity::Odd), "odd", "Odd"},
                                       {int(Parity::Even), "even", "Even"}},
                                      Parity::None};
    lux::TextSetting note{*this, "note", "Note", "Free text", "a;b"};
    lux::BoolSetting inverted{*this, "inverted", "", "Inverted", "Idle is low"};

protected:
    [[nodiscard]] std::string check() const override { return baudrate == 13 ? "Thirteen is no rate." : ""; }
};

/// Two lines that may be one and the same.
class SharingSettings : public lux::Settings {
public:
    lux::ChannelSetting select{*this, "select", "Select", ""};
    lux::ChannelSetting enable{*this, "enable", "Enable", ""};

protected:
    [[nodiscard]] bool channelsMayBeShared() const override { return true; }
};

template<class Face>
Face &faceOf(const lux::Settings &settings, const std::string &key)
{
    for (std::uint32_t i = 0; i < settings.GetSettingsInterfacesCount(); ++i) {
        AnalyzerSettingInterface *face = settings.GetSettingsInterface(i);
        if (face->GetKey() == key)
            return static_cast<Face &>(*face);
    }
    qFatal("no such key");
}

} // namespace

class TstDecoderSettings : public QObject {
    Q_OBJECT
private slots:
    void interfacesAreMadeFromTheMembersChannelsFirst();
    void editedValuesCountOnlyOnceTheyAreApplied();
    void whatIsRefusedIsToldAndChangesNothing();
    void aDecoderMayAllowOneChannelForTwoSettings();
    void storedValuesThatGoNotTogetherAreTold();
    void aTextGivesTheSameSettingsAgain();
    void storedTextsHoldNoSeparatorOfTheConfiguration();
    void malformedPartsGetTheirDefaults();
    void valuesAreReadAsTheyAreWrittenOnACommandLine();
    void anEntryOfAListMayHaveFurtherSpellings();
    void valuesThatAreNoneOfTheSettingAreRefused();
    void exportOptionsAreListed();
    void theUndefinedChannelIsReadBackAndIsNoRealOne();
    void anInterfaceIsDestroyedThroughItsBase();
};

void TstDecoderSettings::interfacesAreMadeFromTheMembersChannelsFirst()
{
    const SampleSettings settings;
    QCOMPARE(settings.GetSettingsInterfacesCount(), 6U);
    QCOMPARE(settings.GetChannelsCount(), 2U);
    QCOMPARE(std::string(settings.GetSettingsInterface(0)->GetKey()), std::string("rx"));
    QCOMPARE(std::string(settings.GetSettingsInterface(2)->GetKey()), std::string("baudrate"));
    QVERIFY(settings.GetSettingsInterface(6) == nullptr);
    QCOMPARE(std::string(settings.GetSettingsInterface(1)->GetTitle()), std::string("TX"));
    QCOMPARE(std::string(settings.GetSettingsInterface(1)->GetToolTip()), std::string("The other line"));
    QVERIFY(faceOf<AnalyzerSettingInterfaceChannel>(settings, "tx").GetSelectionOfNoneIsAllowed());
    QVERIFY(!faceOf<AnalyzerSettingInterfaceChannel>(settings, "rx").GetSelectionOfNoneIsAllowed());
    const auto &rate = faceOf<AnalyzerSettingInterfaceInteger>(settings, "baudrate");
    QCOMPARE(rate.GetType(), AnalyzerInterfaceTypeId::Integer);
    QCOMPARE(rate.GetMax(), 1000000);
    QCOMPARE(rate.GetInteger(), 100000);
    const auto &parity = faceOf<AnalyzerSettingInterfaceNumberList>(settings, "parity");
    QCOMPARE(parity.GetListboxNumbersCount(), 3U);
    QCOMPARE(parity.GetListboxNumber(2), 2.0);
    QCOMPARE(std::string(parity.GetListboxString(2)), std::string("Even"));
    QCOMPARE(std::string(parity.GetListboxString(3)), std::string());
    const auto &box = faceOf<AnalyzerSettingInterfaceBool>(settings, "inverted");
    QCOMPARE(std::string(box.GetCheckBoxText()), std::string("Inverted"));
}

void TstDecoderSettings::editedValuesCountOnlyOnceTheyAreApplied()
{
    SampleSettings settings;
    QVERIFY(!settings.rx.isDefined());
    faceOf<AnalyzerSettingInterfaceChannel>(settings, "rx").SetChannel(Channel(0, 3));
    faceOf<AnalyzerSettingInterfaceNumberList>(settings, "parity").SetNumber(2);
    faceOf<AnalyzerSettingInterfaceBool>(settings, "inverted").SetValue(true);
    const std::string before = settings.SaveText();
    QVERIFY(!settings.rx.isDefined());
    QVERIFY(settings.ApplyInterfaces());
    QCOMPARE(settings.rx.value().channelIndex, 3U);
    QVERIFY(settings.parity == Parity::Even);
    QVERIFY(settings.inverted);
    QVERIFY(before != settings.SaveText());
}

void TstDecoderSettings::whatIsRefusedIsToldAndChangesNothing()
{
    SampleSettings settings;
    settings.LoadText("rx=1,baudrate=9600");
    const std::string before = settings.SaveText();
    const auto refusedFor = [&settings](const char *key, const char *value, const char *sentence) {
        const std::string old = faceOf<AnalyzerSettingInterface>(settings, key).GetAsText();
        QVERIFY(faceOf<AnalyzerSettingInterface>(settings, key).SetFromText(value));
        QVERIFY(!settings.ApplyInterfaces());
        QCOMPARE(std::string(settings.GetSaveErrorMessage()), std::string(sentence));
        faceOf<AnalyzerSettingInterface>(settings, key).SetFromText(old.c_str());
    };
    refusedFor("tx", "1", "\"RX\" and \"TX\" must be different channels.");
    refusedFor("rx", "none", "Please select a channel for \"RX\".");
    refusedFor("baudrate", "13", "Thirteen is no rate.");
    QCOMPARE(std::string(settings.SaveText()), before);
    faceOf<AnalyzerSettingInterfaceInteger>(settings, "baudrate").SetInteger(-1);
    QVERIFY(!settings.ApplyInterfaces());
    QCOMPARE(std::string(settings.GetSaveErrorMessage()), std::string("\"Bit rate\" must be from 0 to 1000000."));
    faceOf<AnalyzerSettingInterfaceInteger>(settings, "baudrate").SetInteger(5);
    faceOf<AnalyzerSettingInterfaceNumberList>(settings, "parity").SetNumber(7);
    QVERIFY(!settings.ApplyInterfaces());
    faceOf<AnalyzerSettingInterfaceNumberList>(settings, "parity").SetNumber(1);
    QVERIFY(settings.ApplyInterfaces());
    QCOMPARE(std::string(settings.GetSaveErrorMessage()), std::string());
}

void TstDecoderSettings::aDecoderMayAllowOneChannelForTwoSettings()
{
    SharingSettings settings;
    faceOf<AnalyzerSettingInterfaceChannel>(settings, "select").SetChannel(Channel(0, 4));
    QVERIFY(!settings.ApplyInterfaces()); // but both must be there
    faceOf<AnalyzerSettingInterfaceChannel>(settings, "enable").SetChannel(Channel(0, 4));
    QVERIFY(settings.ApplyInterfaces());
    QCOMPARE(settings.enable.value().channelIndex, settings.select.value().channelIndex);
    QCOMPARE(settings.problem(), std::string());
}

void TstDecoderSettings::storedValuesThatGoNotTogetherAreTold()
{
    SampleSettings settings;
    QCOMPARE(settings.problem(), std::string("Please select a channel for \"RX\"."));
    settings.LoadText("rx=1");
    QCOMPARE(settings.problem(), std::string());
    settings.LoadText("rx=1,tx=1");
    QCOMPARE(settings.problem(), std::string("\"RX\" and \"TX\" must be different channels."));
    settings.LoadText("rx=1,baudrate=13");
    QCOMPARE(settings.problem(), std::string("Thirteen is no rate."));
    faceOf<AnalyzerSettingInterfaceInteger>(settings, "baudrate").SetInteger(14); // edited, not yet in use
    QCOMPARE(settings.problem(), std::string("Thirteen is no rate."));
    QVERIFY(settings.ApplyInterfaces());
    QCOMPARE(settings.problem(), std::string());
}

void TstDecoderSettings::aTextGivesTheSameSettingsAgain()
{
    SampleSettings brief;
    brief.LoadText("rx=1,baudrate=9600");
    QCOMPARE(std::string(brief.GetSettingBrief()), std::string(brief.SaveText()));
    QCOMPARE(std::string(brief.SaveText()), std::string(brief.SaveText()));
    SampleSettings settings;
    settings.LoadText("baudrate=115200,rx=7,tx=0,parity=odd,note=x%2Cy%3Bz%25%C3%A9,inverted=true");
    SampleSettings other;
    other.LoadText(settings.SaveText());
    QCOMPARE(std::string(other.SaveText()), std::string(settings.SaveText()));
    QCOMPARE(other.baudrate.value(), 115200);
    QCOMPARE(other.rx.value().channelIndex, 7U);
    QCOMPARE(other.tx.value().channelIndex, 0U);
    QVERIFY(other.parity == Parity::Odd);
    QCOMPARE(other.note.value(), std::string("x,y;z%\xC3\xA9"));
    QVERIFY(other.inverted);
}

void TstDecoderSettings::storedTextsHoldNoSeparatorOfTheConfiguration()
{
    SampleSettings settings;
    QCOMPARE(std::string(settings.SaveText()),
             std::string("baudrate=100000,rx=none,tx=none,parity=none,note=a%3Bb,inverted=false"));
    faceOf<AnalyzerSettingInterfaceText>(settings, "note").SetText("line\nend;%41=\x7F \xFF");
    faceOf<AnalyzerSettingInterfaceChannel>(settings, "rx").SetChannel(Channel(0, 1));
    QVERIFY(settings.ApplyInterfaces());
    for (const char c : std::string(settings.SaveText()))
        QVERIFY(c > ' ' && c != 0x7F && c != ';');
}

void TstDecoderSettings::malformedPartsGetTheirDefaults()
{
    for (const char *text : {"", ",,,=,==", "rx", "unknown=5", "rx=x,baudrate=-5,parity=7,inverted=maybe,note",
                             "baudrate=1000001", "baudrate=1e999", "baudrate=0x10", "baudrate=12.5", "RX=3", "rx=1 "}) {
        SampleSettings settings;
        const std::string before = settings.SaveText();
        settings.LoadText(text);
        QCOMPARE(std::string(settings.SaveText()), before);
    }
    SampleSettings settings;
    settings.LoadText("rx=3,baudrate=oops,parity=even");
    QCOMPARE(settings.rx.value().channelIndex, 3U);
    QCOMPARE(settings.baudrate.value(), 100000);
    QVERIFY(settings.parity == Parity::Even);
    settings.LoadText(nullptr);
    QVERIFY(!settings.rx.isDefined());
}

void TstDecoderSettings::valuesAreReadAsTheyAreWrittenOnACommandLine()
{
    const SampleSettings settings;
    QVERIFY(faceOf<AnalyzerSettingInterface>(settings, "parity").SetFromText("even"));
    QCOMPARE(faceOf<AnalyzerSettingInterfaceNumberList>(settings, "parity").GetNumber(), 2.0);
    for (const char *odd : {"odd", "Odd", "ODD"})
        QVERIFY(faceOf<AnalyzerSettingInterface>(settings, "parity").SetFromText(odd));
    QCOMPARE(std::string(faceOf<AnalyzerSettingInterface>(settings, "parity").GetAsText()), std::string("odd"));
    QVERIFY(faceOf<AnalyzerSettingInterface>(settings, "tx").SetFromText("None"));
    for (const char *yes : {"true", "True", "1", "yes", "on"})
        QVERIFY(faceOf<AnalyzerSettingInterface>(settings, "inverted").SetFromText(yes));
    QCOMPARE(std::string(faceOf<AnalyzerSettingInterface>(settings, "inverted").GetAsText()), std::string("true"));
}

void TstDecoderSettings::anEntryOfAListMayHaveFurtherSpellings()
{
    AnalyzerSettingInterfaceNumberList list;
    list.AddNumber(4, "1", "", "1");
    list.AddNumber(6, "1.5", "", "1.5");
    list.AddNumber(0, "Highest first", "", "msb|msb-first");
    list.AddNumber(96, "96", "");
    const auto taken = [&list](const char *text) {
        list.SetNumber(-1);
        return list.SetFromText(text) ? std::string(list.GetAsText()) : std::string("refused");
    };
    QCOMPARE(taken("msb-first"), std::string("msb"));
    QCOMPARE(taken("MSB"), std::string("msb"));
    QCOMPARE(std::string(list.GetListboxWord(2)), std::string("msb"));
    QCOMPARE(taken("1.0"), std::string("1"));
    QCOMPARE(taken("1.50"), std::string("1.5"));
    QCOMPARE(taken("96.0"), std::string("96"));
    for (const char *none : {"4", "0", "", "msb|msb-first", "|", "msb-", "96.5"})
        QCOMPARE(taken(none), std::string("refused"));
}

void TstDecoderSettings::valuesThatAreNoneOfTheSettingAreRefused()
{
    const SampleSettings settings;
    QVERIFY(!faceOf<AnalyzerSettingInterface>(settings, "rx").SetFromText("-2"));
    QVERIFY(!faceOf<AnalyzerSettingInterface>(settings, "rx").SetFromText("1.5"));
    QVERIFY(!faceOf<AnalyzerSettingInterface>(settings, "rx").SetFromText(nullptr));
    QVERIFY(!faceOf<AnalyzerSettingInterface>(settings, "baudrate").SetFromText("99999999999999999999"));
    QVERIFY(!faceOf<AnalyzerSettingInterface>(settings, "parity").SetFromText("evenly"));
    QVERIFY(!faceOf<AnalyzerSettingInterface>(settings, "parity").SetFromText("1")); // an entry's place says nothing
    QVERIFY(!faceOf<AnalyzerSettingInterface>(settings, "note").SetFromText("a\nb"));
    QVERIFY(!faceOf<AnalyzerSettingInterface>(settings, "inverted").SetFromText("2"));
}

void TstDecoderSettings::exportOptionsAreListed()
{
    const SampleSettings settings;
    QCOMPARE(settings.GetExportOptionsCount(), 2U);
    std::uint32_t id = 9;
    const char *name = nullptr;
    QVERIFY(settings.GetExportOption(1, &id, &name));
    QCOMPARE(id, 1U);
    QCOMPARE(std::string(name), std::string("Bytes"));
    QVERIFY(!settings.GetExportOption(2, &id, &name));
    QCOMPARE(std::string(name), std::string());
    QCOMPARE(settings.GetFileExtensionCount(0), 2U);
    QCOMPARE(settings.GetFileExtensionCount(7), 0U);
    const char *extension = nullptr;
    QVERIFY(settings.GetFileExtension(0, 1, &name, &extension));
    QCOMPARE(std::string(extension), std::string("csv"));
    QVERIFY(!settings.GetFileExtension(0, 2, &name, &extension));
}

void TstDecoderSettings::theUndefinedChannelIsReadBackAndIsNoRealOne()
{
    AnalyzerSettingInterfaceChannel face;
    face.SetSelectionOfNoneIsAllowed(true);
    face.SetChannel(Channel(0, 3));
    face.SetChannel(Channel(std::uint64_t(-1), std::uint32_t(-1)));
    QCOMPARE(face.GetChannel().channelIndex, std::uint32_t(-1));
    QCOMPARE(face.GetChannel().deviceId, std::uint64_t(-1));
    face.SetChannel(Channel(0, std::uint32_t(-1))); // the index alone tells
    QCOMPARE(face.GetChannel().deviceId, std::uint64_t(-1));
    QVERIFY(!face.GetChannel().isDefined());
    for (std::uint32_t real = 0; real < 64; ++real)
        QVERIFY(face.GetChannel().channelIndex != real);
}

void TstDecoderSettings::anInterfaceIsDestroyedThroughItsBase()
{
    std::unique_ptr<AnalyzerSettingInterface> face = std::make_unique<AnalyzerSettingInterfaceText>();
    QCOMPARE(face->GetType(), AnalyzerInterfaceTypeId::Text);
    QCOMPARE(std::string(face->GetTitle()), std::string());
    QCOMPARE(AnalyzerSettingInterface().GetType(), AnalyzerInterfaceTypeId::Unknown);
}

QTEST_APPLESS_MAIN(TstDecoderSettings)
#include "tst_DecoderSettings.moc"
