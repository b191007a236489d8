package com.qarvo.kel.util.endtoend;

import com.qarvo.kel.util.WindowsUtil;
import java.io.IOException;
import java.io.UncheckedIOException;
import java.lang.reflect.InvocationTargetException;
import java.lang.reflect.Method;
import java.net.URL;
import java.net.URLClassLoader;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import java.util.Set;
import java.util.concurrent.Callable;

/**
 * The library once more, loaded by a class loader of its own and from a copy of the DLL, so that some of its classes
 * can be missing or different.
 */
final class Isolated implements AutoCloseable {
    private static final String PROPERTY = "winutil.library";

    private final URLClassLoader loader;
    private final Object util;

    private Isolated(URLClassLoader loader) throws Throwable {
        this.loader = loader;
        try {
            this.util = loader.loadClass(WindowsUtil.class.getName()).getConstructor().newInstance();
        } catch (InvocationTargetException e) {
            loader.close();
            throw e.getCause();
        }
    }

    /** The library without these classes. */
    static Isolated without(String... classes) throws Exception {
        return load(copyOfDll(Files.createTempDirectory(EndToEnd.work(), "isolated")).toString(), jar(), null, classes);
    }

    /** The library with a few classes taken from another jar. */
    static Isolated with(String variant) throws Exception {
        Path jar = Path.of(EndToEnd.fixture("variants"), variant + ".jar");
        return load(copyOfDll(Files.createTempDirectory(EndToEnd.work(), "isolated")).toString(), jar(), jar);
    }

    /** The library from a jar, with the DLL that the property names; without the property when it is null. */
    static Isolated load(String property, Path jar, Path inFront, String... hidden) {
        String before = System.getProperty(PROPERTY);
        try {
            List<URL> path = new ArrayList<>();
            if (inFront != null) {
                path.add(inFront.toUri().toURL());
            }
            path.add(jar.toUri().toURL());
            path.add(Isolated.class.getProtectionDomain().getCodeSource().getLocation());
            if (property == null) {
                System.clearProperty(PROPERTY);
            } else {
                System.setProperty(PROPERTY, property);
            }
            return new Isolated(new Filter(path.toArray(URL[]::new), Set.of(hidden)));
        } catch (IOException e) {
            throw new UncheckedIOException(e);
        } catch (RuntimeException | Error e) {
            throw e;
        } catch (Throwable e) {
            throw new IllegalStateException(e);
        } finally {
            System.setProperty(PROPERTY, before);
        }
    }

    /** The jar that the suite runs with. */
    static Path jar() {
        return Arrays.stream(System.getProperty("java.class.path").split(";")).map(Path::of)
                .filter(path -> path.endsWith("winutil.jar")).findFirst().orElseThrow();
    }

    /** Copies the DLL into a folder. The copy stays: it cannot be removed while it is loaded. */
    static Path copyOfDll(Path folder) throws IOException {
        return Files.copy(Path.of(System.getProperty(PROPERTY)), folder.resolve("WinUtil64.dll"));
    }

    /** Makes an object of a class of the tests, as the isolated library sees it. */
    <T> Callable<?> make(Class<? extends Callable<T>> type) throws ReflectiveOperationException {
        return (Callable<?>) loader.loadClass(type.getName()).getConstructor().newInstance();
    }

    /** Calls the one method of this name. */
    Object call(String name, Object... arguments) throws Throwable {
        Method method = Arrays.stream(util.getClass().getMethods())
                .filter(candidate -> candidate.getName().equals(name)).findFirst().orElseThrow();
        try {
            return method.invoke(util, arguments);
        } catch (InvocationTargetException e) {
            throw e.getCause();
        }
    }

    @Override
    public void close() throws IOException {
        loader.close();
    }

    private static final class Filter extends URLClassLoader {
        private final Set<String> hidden;

        Filter(URL[] path, Set<String> hidden) {
            super(path, getPlatformClassLoader());
            this.hidden = hidden;
        }

        @Override
        protected Class<?> findClass(String name) throws ClassNotFoundException {
            if (hidden.contains(name)) {
                throw new ClassNotFoundException(name);
            }
            return super.findClass(name);
        }
    }
}
