#pragma once

#include <QString>

namespace searchdata {

/// The controls of one row of the entry control, as the core drives them. The widgets library
/// implements them over real widgets; core code and its tests use them without any window.
class IControl {
public:
    virtual ~IControl() = default;
};

/// A text box: a line or a note.
class ITextBoxControl : public IControl {
public:
    virtual QString Text() const = 0;
    virtual void SetText(const QString& text) = 0;
    virtual int MaxLength() const = 0;
    virtual void SetMaxLength(int length) = 0;
    /// Start of the selection (or the caret) in `Text`; by default the caret stands at the end.
    virtual int SelStart() const { return static_cast<int>(Text().size()); }
    /// Length of the selection; 0 when nothing is selected.
    virtual int SelLength() const { return 0; }
};

/// A check box; `Value` is 1 when checked, 0 when not.
class ICheckBoxControl : public IControl {
public:
    virtual int Value() const = 0;
    virtual void SetValue(int value) = 0;
};

/// A combo box with an editable text and a list; `ListIndex` is -1 when nothing is selected.
class IComboBoxControl : public IControl {
public:
    virtual QString Text() const = 0;
    virtual void SetText(const QString& text) = 0;
    virtual QString List(int index) const = 0;
    virtual int ListCount() const = 0;
    virtual int ListIndex() const = 0;
    virtual void SetListIndex(int index) = 0;
    /// Index of the entry added last.
    virtual int NewIndex() const = 0;
    virtual void Clear() = 0;
    virtual void AddItem(const QString& text) = 0;
    virtual void RemoveItem(int index) = 0;
    virtual void SetFocus() = 0;
    /// Start of the selection (or the caret) in the edit text; by default the caret stands at the end.
    virtual int SelStart() const { return static_cast<int>(Text().size()); }
    /// Length of the selection in the edit text; 0 when nothing is selected.
    virtual int SelLength() const { return 0; }
};

/// A label.
class ILabelControl : public IControl {
public:
    virtual QString Caption() const = 0;
    virtual void SetCaption(const QString& caption) = 0;
};

/// A push button.
class IButtonControl : public IControl {
public:
    virtual bool Enabled() const = 0;
    virtual void SetEnabled(bool enabled) = 0;
    virtual bool Default() const = 0;
    virtual void SetDefault(bool isDefault) = 0;
};

} // namespace searchdata
