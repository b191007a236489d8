package com.qarvo.kel.util;

/** A list whose record has neither of the constructors that the library knows. */
public class WinFileList {
    public static class WinFile {
        public WinFile(String path) {
        }
    }
}
