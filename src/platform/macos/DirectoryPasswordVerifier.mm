#include "platform/macos/DirectoryPasswordVerifier.h"

#include "core/async/Worker.h"

#import <Foundation/Foundation.h>
#import <OpenDirectory/OpenDirectory.h>

namespace larkspur {

namespace {

Verification askDirectory(const Password &password) {
    @autoreleasepool {
        NSError *error = nil;
        ODNode *node = [ODNode nodeWithSession:[ODSession defaultSession]
                                          type:kODNodeTypeLocalNodes
                                         error:&error];
        ODRecord *user = [node recordWithRecordType:kODRecordTypeUsers
                                               name:NSUserName()
                                         attributes:nil
                                              error:&error];
        if (!user)
            return Verification::CannotTell;
        NSString *text = [[NSString alloc] initWithBytes:password.utf8().constData()
                                                  length:static_cast<NSUInteger>(password.utf8().size())
                                                encoding:NSUTF8StringEncoding];
        return [user verifyPassword:text error:&error] ? Verification::Matches : Verification::Differs;
    }
}

} // namespace

Task<Verification> DirectoryPasswordVerifier::verify(Password password) {
    co_return co_await runInWorker([password = std::move(password)] { return askDirectory(password); });
}

} // namespace larkspur
