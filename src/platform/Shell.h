#pragma once

/// Has the Windows shell open a program, as a double click would: `program` by its bare name, with `parameters`, in
/// `folder`. Does not wait for it and does not tell whether it worked.
void OpenProgram(const wchar_t* program, const wchar_t* parameters, const wchar_t* folder) noexcept;
