// The simulator's one answer that a user can change: the products that it reports as connected.

#include <algorithm>
#include <array>
#include <cstddef>
#include <mutex>
#include <span>

#include "core/CDevApiInterface_Impl.h"
#include "link/SimulatorTables.h"
#include "platform/Registry.h"

namespace {

constexpr const wchar_t* kSimulatorsKey = L"Software\\Vellmark\\Misc\\Simulators";
constexpr const wchar_t* kAnswerValue = L"OKOLab_Bold_Line_listconprod_answer";
constexpr std::size_t kAnswerBufferLength = 260;

void WriteDefault(const RegistryKey& key) noexcept {
    std::array<wchar_t, kDefaultListConProdReply.size()> wide{};
    std::ranges::copy(kDefaultListConProdReply, wide.begin());
    key.WriteText(kAnswerValue, {wide.data(), wide.size()});
}

/// Keeps the single-byte characters of `text` up to the first that is none, as the C run-time's conversion would, and a
/// zero.
void StoreNarrow(std::wstring_view text, std::span<char> answer) noexcept {
    std::ranges::fill(answer, '\0');
    for (std::size_t i = 0; i < text.size() && i + 1 < answer.size() && text[i] < 0x100; ++i) {
        answer[i] = static_cast<char>(text[i]);
    }
}

}  // namespace

void CDevApiInterface_Impl::LoadSimulatorAnswer() noexcept {
    const auto key = OpenLocalMachine(kSimulatorsKey);
    if (!key) {
        CreateLocalMachine(kSimulatorsKey);
        if (const auto created = OpenLocalMachine(kSimulatorsKey)) {
            WriteDefault(*created);
        }
        return;
    }

    const auto info = key->Query(kAnswerValue);
    if (!info) {
        WriteDefault(*key);
        return;
    }
    std::array<wchar_t, kAnswerBufferLength> buffer{};
    if (info->type != kRegistryString) {
        return;
    }
    if (const auto text = key->ReadText(kAnswerValue, buffer)) {
        const std::scoped_lock lock(m_csCatalogue);
        StoreNarrow(*text, m_szSimListconprod);
    }
}
