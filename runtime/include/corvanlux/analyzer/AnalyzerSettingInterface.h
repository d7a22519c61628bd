#pragma once

#include "AnalyzerTypes.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

enum class AnalyzerInterfaceTypeId : std::int32_t {
    Unknown = 0,
    Channel = 1,
    NumberList = 2,
    Integer = 3,
    Text = 4,
    Bool = 5,
};

/// One setting as a dialog sees it: a value that is edited here and reaches the decoder only by
/// AnalyzerSettings::ApplyInterfaces. Owned by the settings; main thread. Texts are UTF-8, never null, and live as long
/// as the object or until they are set anew.
class LUX_ANALYZER_API AnalyzerSettingInterface {
public:
    AnalyzerSettingInterface();
    AnalyzerSettingInterface(const AnalyzerSettingInterface &) = delete;
    AnalyzerSettingInterface &operator=(const AnalyzerSettingInterface &) = delete;
    virtual ~AnalyzerSettingInterface();
    [[nodiscard]] virtual AnalyzerInterfaceTypeId GetType() const;

    static void *operator new(std::size_t size);
    static void operator delete(void *memory);
    static void operator delete(void *memory, std::size_t size);

    [[nodiscard]] const char *GetTitle() const;
    [[nodiscard]] const char *GetToolTip() const;
    void SetTitleAndToolTip(const char *title, const char *toolTip);
    /// The stable name in stored texts and on a command line: lower-case ASCII letters, digits, "_". Empty for none.
    [[nodiscard]] const char *GetKey() const;
    void SetKey(const char *key);

    /// Reads a value as it is written on a command line and in a stored text: "3", "none", "even", "115200", "true".
    /// Words are read in either case.
    /// @return false when the text is no value of this setting; nothing changes then
    bool SetFromText(const char *text);
    /// The same the other way. Good until the next call.
    [[nodiscard]] const char *GetAsText() const;

private:
    struct Private;
    Private *m_private;
};
static_assert(sizeof(AnalyzerSettingInterface) == 2 * sizeof(void *));

class LUX_ANALYZER_API AnalyzerSettingInterfaceChannel : public AnalyzerSettingInterface {
public:
    AnalyzerSettingInterfaceChannel();
    ~AnalyzerSettingInterfaceChannel() override;
    [[nodiscard]] AnalyzerInterfaceTypeId GetType() const override;
    static void *operator new(std::size_t size);
    static void operator delete(void *memory);
    static void operator delete(void *memory, std::size_t size);

    [[nodiscard]] Channel GetChannel() const;
    void SetChannel(const Channel &channel);
    [[nodiscard]] bool GetSelectionOfNoneIsAllowed() const;
    void SetSelectionOfNoneIsAllowed(bool allowed);

private:
    friend class AnalyzerSettingInterface;
    bool takeText(std::string_view text);

    struct Private;
    Private *m_private;
};

/// A choice from a list of numbers, each with a text for the user and a short word for stored texts.
class LUX_ANALYZER_API AnalyzerSettingInterfaceNumberList : public AnalyzerSettingInterface {
public:
    AnalyzerSettingInterfaceNumberList();
    ~AnalyzerSettingInterfaceNumberList() override;
    [[nodiscard]] AnalyzerInterfaceTypeId GetType() const override;
    static void *operator new(std::size_t size);
    static void operator delete(void *memory);
    static void operator delete(void *memory, std::size_t size);

    /// @param word  stable name of the entry, as of a key; empty: the number itself. Further spellings that are read
    ///              follow it behind "|": "msb|msb-first"
    void AddNumber(double number, const char *text, const char *toolTip, const char *word = "");
    void ClearNumbers();
    [[nodiscard]] std::uint32_t GetListboxNumbersCount() const;
    [[nodiscard]] double GetListboxNumber(std::uint32_t index) const;      ///< 0 outside the list
    [[nodiscard]] const char *GetListboxString(std::uint32_t index) const; ///< empty outside the list
    [[nodiscard]] const char *GetListboxToolTip(std::uint32_t index) const;
    [[nodiscard]] const char *GetListboxWord(std::uint32_t index) const; ///< without further spellings
    [[nodiscard]] double GetNumber() const;
    void SetNumber(double number);

private:
    friend class AnalyzerSettingInterface;
    bool takeText(std::string_view text);

    struct Private;
    Private *m_private;
};

class LUX_ANALYZER_API AnalyzerSettingInterfaceInteger : public AnalyzerSettingInterface {
public:
    AnalyzerSettingInterfaceInteger();
    ~AnalyzerSettingInterfaceInteger() override;
    [[nodiscard]] AnalyzerInterfaceTypeId GetType() const override;
    static void *operator new(std::size_t size);
    static void operator delete(void *memory);
    static void operator delete(void *memory, std::size_t size);

    [[nodiscard]] std::int32_t GetInteger() const;
    void SetInteger(std::int32_t value);
    [[nodiscard]] std::int32_t GetMin() const;
    [[nodiscard]] std::int32_t GetMax() const;
    void SetMin(std::int32_t least);
    void SetMax(std::int32_t most);

private:
    friend class AnalyzerSettingInterface;
    bool takeText(std::string_view text);

    struct Private;
    Private *m_private;
};

class LUX_ANALYZER_API AnalyzerSettingInterfaceText : public AnalyzerSettingInterface {
public:
    AnalyzerSettingInterfaceText();
    ~AnalyzerSettingInterfaceText() override;
    [[nodiscard]] AnalyzerInterfaceTypeId GetType() const override;
    static void *operator new(std::size_t size);
    static void operator delete(void *memory);
    static void operator delete(void *memory, std::size_t size);

    [[nodiscard]] const char *GetText() const;
    void SetText(const char *text);

private:
    friend class AnalyzerSettingInterface;
    bool takeText(std::string_view text);

    struct Private;
    Private *m_private;
};

class LUX_ANALYZER_API AnalyzerSettingInterfaceBool : public AnalyzerSettingInterface {
public:
    AnalyzerSettingInterfaceBool();
    ~AnalyzerSettingInterfaceBool() override;
    [[nodiscard]] AnalyzerInterfaceTypeId GetType() const override;
    static void *operator new(std::size_t size);
    static void operator delete(void *memory);
    static void operator delete(void *memory, std::size_t size);

    [[nodiscard]] bool GetValue() const;
    void SetValue(bool value);
    [[nodiscard]] const char *GetCheckBoxText() const;
    void SetCheckBoxText(const char *text);

private:
    friend class AnalyzerSettingInterface;
    bool takeText(std::string_view text);

    struct Private;
    Private *m_private;
};
