#include "platform/macos/KeychainPasswordStore.h"

#include "core/async/Worker.h"

#import <Foundation/Foundation.h>
#import <LocalAuthentication/LocalAuthentication.h>
#import <Security/Security.h>

namespace larkspur {

namespace {

NSMutableDictionary *itemQuery() {
    return [@{
        (__bridge id)kSecClass : (__bridge id)kSecClassGenericPassword,
        (__bridge id)kSecAttrService : @"com.ferncastle.larkspur",
        (__bridge id)kSecAttrAccount : @"sudoPassword",
        (__bridge id)kSecUseDataProtectionKeychain : @YES,
    } mutableCopy];
}

std::optional<Password> readItem(const QString &reason) {
    @autoreleasepool {
        LAContext *context = [[LAContext alloc] init];
        context.localizedReason = reason.toNSString();
        NSMutableDictionary *query = itemQuery();
        query[(__bridge id)kSecReturnData] = @YES;
        query[(__bridge id)kSecMatchLimit] = (__bridge id)kSecMatchLimitOne;
        query[(__bridge id)kSecUseAuthenticationContext] = context;
        CFTypeRef found = nullptr;
        if (SecItemCopyMatching((__bridge CFDictionaryRef)query, &found) != errSecSuccess)
            return std::nullopt;
        NSData *data = (__bridge_transfer NSData *)found;
        return Password(QByteArray(static_cast<const char *>(data.bytes),
                                   static_cast<qsizetype>(data.length)));
    }
}

} // namespace

bool KeychainPasswordStore::isAvailable() const {
    @autoreleasepool {
        return [[[LAContext alloc] init] canEvaluatePolicy:LAPolicyDeviceOwnerAuthenticationWithBiometrics
                                                     error:nil];
    }
}

bool KeychainPasswordStore::hasCopy() const {
    @autoreleasepool {
        NSMutableDictionary *query = itemQuery();
        query[(__bridge id)kSecReturnAttributes] = @YES;
        query[(__bridge id)kSecMatchLimit] = (__bridge id)kSecMatchLimitOne;
        CFTypeRef found = nullptr;
        const OSStatus status = SecItemCopyMatching((__bridge CFDictionaryRef)query, &found);
        if (found)
            CFRelease(found);
        return status == errSecSuccess;
    }
}

Task<std::optional<Password>> KeychainPasswordStore::read(QString reason) {
    // In a worker: the call returns only when the person has answered the system's prompt.
    co_return co_await runInWorker([reason] { return readItem(reason); });
}

bool KeychainPasswordStore::save(Password password) {
    @autoreleasepool {
        SecAccessControlRef access = SecAccessControlCreateWithFlags(
            kCFAllocatorDefault, kSecAttrAccessibleWhenUnlockedThisDeviceOnly,
            kSecAccessControlBiometryCurrentSet, nullptr);
        if (!access)
            return false;
        remove();
        NSMutableDictionary *item = itemQuery();
        item[(__bridge id)kSecAttrAccessControl] = (__bridge_transfer id)access;
        item[(__bridge id)kSecValueData] =
            [NSData dataWithBytes:password.utf8().constData()
                           length:static_cast<NSUInteger>(password.utf8().size())];
        return SecItemAdd((__bridge CFDictionaryRef)item, nullptr) == errSecSuccess;
    }
}

void KeychainPasswordStore::remove() {
    @autoreleasepool {
        SecItemDelete((__bridge CFDictionaryRef)itemQuery());
    }
}

} // namespace larkspur
