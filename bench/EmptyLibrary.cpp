// A library with nothing in it: what loading OkoLabBoldLine.dll is held against.
