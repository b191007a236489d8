package com.qarvo.kel.util.endtoend;

import com.qarvo.kel.util.WindowsUtil;

/** Calls one native of a DLL that breaks the rules of the JNI on purpose; run_endtoend.py looks at what comes of it. */
final class Violator {
    private Violator() {
    }

    public static void main(String[] arguments) throws Exception {
        WindowsUtil util = new WindowsUtil();
        switch (arguments[0]) {
            case "exists" -> util.exists("");
            case "isDir" -> util.isDir("");
            case "mkdir" -> util.mkdir("");
            // One of the names that the library is allowed, then one that it is not.
            case "getFileAttr" -> {
                util.getFileAttr("Ljava/util/ArrayList;");
                util.getFileAttr("Ljava/util/HashMap;");
            }
            default -> throw new IllegalArgumentException(arguments[0]);
        }
    }
}
