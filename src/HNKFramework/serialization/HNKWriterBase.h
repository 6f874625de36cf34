#pragma once
// Type identity of a Writer. Every Writer names the namespace and XML type of
// the element it fills through four static functions; a Writer that derives
// from this base and hides none of them stamps nothing.
//
// The framework's base records name their type by number (HNKDefaultMap
// turns numbers into names); the module's records by string and keep the
// numeric defaults. Numeric type IDs of 100 and below are never stamped.

class HNKWriterBase {
public:
    // XML namespace of the type; "" for none. Never null.
    static const char* getStrNSID() { return ""; }
    // XML type name; "" for none. Never null.
    static const char* getStrTypeID() { return ""; }
    // Numeric namespace ID; 0 for none.
    static unsigned getNSID() { return 0; }
    // Numeric type ID; only values above 100 are stamped.
    static unsigned getTypeID() { return 50; }
};
