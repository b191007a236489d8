package com.qarvo.winutil.bench;

/** One directory entry, as far as a contender knows it: what it does not know is 0 or empty. */
record Entry(String path, boolean directory, long size, long lastModified, int attributes, String security) {
    String name() {
        return path.substring(path.lastIndexOf('\\') + 1);
    }
}
