#include "platform/linux/PamPasswordVerifier.h"

#include "core/async/Worker.h"

#include <cstdlib>
#include <cstring>
#include <pwd.h>
#include <security/pam_appl.h>
#include <unistd.h>

namespace larkspur {

namespace {

/// Answers every question of PAM for a secret with the password. PAM frees the answers.
int answer(int count, const pam_message **questions, pam_response **answers, void *password) {
    auto *all =
        static_cast<pam_response *>(std::calloc(static_cast<std::size_t>(count), sizeof(pam_response)));
    if (!all)
        return PAM_BUF_ERR;
    for (int i = 0; i < count; ++i)
        if (questions[i]->msg_style == PAM_PROMPT_ECHO_OFF)
            all[i].resp = ::strdup(static_cast<const char *>(password));
    *answers = all;
    return PAM_SUCCESS;
}

Verification askPam(const Password &password) {
    const passwd *user = ::getpwuid(::getuid());
    if (!user)
        return Verification::CannotTell;
    QByteArray secret(password.utf8().constData(), password.utf8().size());
    const pam_conv conversation{answer, secret.data()};
    pam_handle_t *handle = nullptr;
    int status = ::pam_start("sudo", user->pw_name, &conversation, &handle);
    if (status == PAM_SUCCESS)
        status = ::pam_authenticate(handle, PAM_SILENT);
    if (handle)
        ::pam_end(handle, status);
    wipe(secret);
    if (status == PAM_SUCCESS)
        return Verification::Matches;
    // Only this one says that the password is wrong; the others, that it could not be looked at.
    return status == PAM_AUTH_ERR ? Verification::Differs : Verification::CannotTell;
}

} // namespace

Task<Verification> PamPasswordVerifier::verify(Password password) {
    const Verification found = co_await runInWorker([password] { return askPam(password); });
    co_return found == Verification::CannotTell ? co_await m_sudo.verify(std::move(password)) : found;
}

} // namespace larkspur
