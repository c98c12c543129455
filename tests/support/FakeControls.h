#pragma once

#include "searchdata/ControlInterfaces.h"

#include <QStringList>

namespace searchdata::test {

// Plain stand-ins for the widgets of an entry row.

class FakeTextBox : public ITextBoxControl {
public:
    QString Text() const override { return text; }
    void SetText(const QString& t) override { text = t; }
    int MaxLength() const override { return maxLength; }
    void SetMaxLength(int length) override { maxLength = length; }
    QString text;
    int maxLength = 0;
};

class FakeCheckBox : public ICheckBoxControl {
public:
    int Value() const override { return value; }
    void SetValue(int v) override { value = v; }
    int value = 0;
};

class FakeComboBox : public IComboBoxControl {
public:
    QString Text() const override { return index >= 0 && index < items.size() ? items[index] : text; }
    void SetText(const QString& t) override { text = t; index = -1; }
    QString List(int i) const override { return items.value(i); }
    int ListCount() const override { return static_cast<int>(items.size()); }
    int ListIndex() const override { return index; }
    void SetListIndex(int i) override { index = i; }
    int NewIndex() const override { return newIndex; }
    void Clear() override { items.clear(); index = -1; newIndex = -1; }
    void AddItem(const QString& t) override { items.append(t); newIndex = static_cast<int>(items.size()) - 1; }
    void RemoveItem(int i) override { items.removeAt(i); }
    void SetFocus() override { ++focusCount; }
    QStringList items;
    QString text;
    int index = -1;
    int newIndex = -1;
    int focusCount = 0;
};

class FakeLabel : public ILabelControl {
public:
    QString Caption() const override { return caption; }
    void SetCaption(const QString& c) override { caption = c; }
    QString caption;
};

class FakeButton : public IButtonControl {
public:
    bool Enabled() const override { return enabled; }
    void SetEnabled(bool e) override { enabled = e; }
    bool Default() const override { return isDefault; }
    void SetDefault(bool d) override { isDefault = d; }
    bool enabled = false;
    bool isDefault = false;
};

} // namespace searchdata::test
