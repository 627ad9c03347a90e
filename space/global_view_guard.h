#pragma once

namespace MorAdmin::Workaround {

/// Puts the global view, and the file system with it, into model space for the length of a scope,
/// and again at its end if something switched it meanwhile. Does not bring back what the global
/// view was before.
class GlobalViewEnsureMS {
public:
    GlobalViewEnsureMS();
    ~GlobalViewEnsureMS();
    GlobalViewEnsureMS(const GlobalViewEnsureMS&) = delete;
    GlobalViewEnsureMS& operator=(const GlobalViewEnsureMS&) = delete;

    /// False when the global view was empty or could not be switched: then nothing may rely on
    /// model space.
    [[nodiscard]] bool IsValid() const;

private:
    bool _PrivateEnsureMS();  // NOLINT(*reserved-identifier): the interface's name
    bool TrySwitchGlobalViewIntoMS();

    bool m_valid;
};

}  // namespace MorAdmin::Workaround
