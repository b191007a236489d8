package com.qarvo.winutil.backup;

import com.qarvo.kel.util.Win32;
import com.qarvo.kel.util.WinFileList.WinFile;
import java.io.FileNotFoundException;
import java.nio.charset.StandardCharsets;
import java.util.List;
import java.util.Map;
import java.util.TreeMap;

/** What is on a disk in memory. Names do not differ by case. */
class FakeDisk {
    static final String SDDL = "O:BAG:SYD:(A;;FA;;;SY)";

    /** What is at a path. */
    static final class Node {
        String path;
        boolean directory;
        byte[] content = new byte[0];
        long modified;
        /** The time that its folder has for it; null when that is the same. */
        Long listed;
        int attributes;
        byte kind;
        String target = "";
        String security = SDDL;
    }

    final Map<String, Node> nodes = new TreeMap<>(String.CASE_INSENSITIVE_ORDER);

    FakeDisk() {
        addDirectory("C:");
    }

    Node addDirectory(String path) {
        return add(path, true, new byte[0], Win32.FILE_ATTRIBUTE_DIRECTORY);
    }

    Node addFile(String path, String content) {
        return add(path, false, content.getBytes(StandardCharsets.UTF_8), Win32.FILE_ATTRIBUTE_ARCHIVE);
    }

    Node addLink(String path, byte kind, String target) {
        boolean directory = kind != WinFile.FILE_SYMBOLIC_LINK && kind != WinFile.FILE;
        Node node = add(path, directory, new byte[0], Win32.FILE_ATTRIBUTE_REPARSE_POINT
                | (directory ? Win32.FILE_ATTRIBUTE_DIRECTORY : 0));
        node.kind = kind;
        node.target = target;
        return node;
    }

    Node node(String path) {
        return nodes.get(path);
    }

    String text(String path) {
        return new String(nodes.get(path).content, StandardCharsets.UTF_8);
    }

    /** All paths below a folder, without the folder itself. */
    List<String> below(String folder) {
        return nodes.values().stream().map(n -> n.path).filter(p -> p.startsWith(folder + "\\")).toList();
    }

    private Node add(String path, boolean directory, byte[] content, int attributes) {
        Node node = new Node();
        node.path = path;
        node.directory = directory;
        node.content = content;
        node.attributes = attributes;
        node.kind = directory ? WinFile.DIRECTORY : WinFile.FILE;
        node.modified = 1_000_000L + nodes.size();
        nodes.put(path, node);
        return node;
    }

    Node find(String path) throws FileNotFoundException {
        Node node = nodes.get(path.endsWith("\\") ? path.substring(0, path.length() - 1) : path);
        if (node == null) {
            throw new FileNotFoundException("");
        }
        return node;
    }
}
