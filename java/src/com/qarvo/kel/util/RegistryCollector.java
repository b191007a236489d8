package com.qarvo.kel.util;

/**
 * Takes what {@link WindowsUtil#listRegistry} finds in a key: first its direct subkeys, then its values. What a
 * collector does not want it need not override.
 *
 * <p>The native method finds each method by name and signature, so a collector need not implement this interface; it is
 * here so that one can be written without looking them up. All are called on the thread that lists, before it returns;
 * an exception thrown here ends the listing and reaches its caller.
 *
 * <p>Root and key are the names as they were given to the listing. Names and texts come by way of the ANSI code page.
 */
public interface RegistryCollector {
    /**
     * Takes a subkey.
     *
     * @param root the name of the root
     * @param key the path of the key that is listed, below the root
     * @param name the subkey
     */
    default void addNode(String root, String key, String name) {}

    /**
     * Takes a text: a value of the type {@code REG_SZ} or {@code REG_EXPAND_SZ}, with the variables in it unexpanded.
     *
     * @param root the name of the root
     * @param key the path of the key that is listed, below the root
     * @param name the value's name; empty for the unnamed one
     * @param value the text
     */
    default void addStringNode(String root, String key, String name, String value) {}

    /**
     * Takes a number: a value of the type {@code REG_DWORD}.
     *
     * @param root the name of the root
     * @param key the path of the key that is listed, below the root
     * @param name the value's name; empty for the unnamed one
     * @param value 0 to 4294967295
     */
    default void addDwordNode(String root, String key, String name, long value) {}

    /**
     * Takes bytes: a value of the type {@code REG_BINARY} or {@code REG_FULL_RESOURCE_DESCRIPTOR}.
     *
     * @param root the name of the root
     * @param key the path of the key that is listed, below the root
     * @param name the value's name; empty for the unnamed one
     * @param value the bytes
     */
    default void addByteNode(String root, String key, String name, byte[] value) {}

    /**
     * Takes a list of texts: a value of the type {@code REG_MULTI_SZ}, which ends at its first empty one.
     *
     * @param root the name of the root
     * @param key the path of the key that is listed, below the root
     * @param name the value's name; empty for the unnamed one
     * @param value the texts
     */
    default void addMultiStringNode(String root, String key, String name, String[] value) {}
}
