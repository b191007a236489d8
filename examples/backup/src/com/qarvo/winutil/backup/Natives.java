package com.qarvo.winutil.backup;

import java.util.function.Supplier;

/** The native side, each part of which is only there once a command needs it. */
record Natives(Supplier<NativeFiles> files, Supplier<NativeInventory> inventory, Supplier<NativeMessages> messages,
        Supplier<NativeProcesses> processes) {
}
