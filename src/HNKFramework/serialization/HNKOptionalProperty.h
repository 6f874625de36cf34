#pragma once
// Value holders of records: HNKProperty<T> holds one T; HNKOptionalProperty<T>
// adds a `specified` flag, so an absent value is neither written nor compared
// as present.

template <class T>
class HNKProperty {
public:
    HNKProperty() : value_() {}
    explicit HNKProperty(const T& value) : value_(value) {}

    const T& get() const { return value_; }
    T& get() { return value_; }
    const T& value() const { return value_; }
    T& value() { return value_; }
    void set(const T& value) { value_ = value; }

protected:
    T value_;
};

template <class T>
class HNKOptionalProperty : public HNKProperty<T> {
public:
    // Default value, not specified.
    HNKOptionalProperty() : specified_(false) {}

    // Stores the value and marks it specified.
    void set(const T& value)
    {
        this->value_ = value;
        specified_ = true;
    }
    HNKOptionalProperty& operator=(const T& value)
    {
        set(value);
        return *this;
    }
    // Sets or clears the flag only; the stored value stays as it is.
    void specify(bool specified) { specified_ = specified; }
    bool isSpecified() const { return specified_; }

private:
    bool specified_;
};
