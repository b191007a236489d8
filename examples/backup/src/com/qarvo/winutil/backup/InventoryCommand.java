package com.qarvo.winutil.backup;

import java.io.PrintWriter;
import java.util.concurrent.Callable;
import picocli.CommandLine;
import picocli.CommandLine.Model.CommandSpec;
import picocli.CommandLine.Option;
import picocli.CommandLine.ParentCommand;
import picocli.CommandLine.Spec;

/** Command line of {@link Inventory}. */
@CommandLine.Command(name = "inventory", description = {
    "Shows what this computer is made of: host, processors, memory, disks with their serial numbers, and volumes.",
    "A question that the system does not answer is reported in its section, and the others are shown."})
final class InventoryCommand implements Callable<Integer> {
    @ParentCommand
    private Main main;

    @Spec
    private CommandSpec spec;

    @Option(names = "--json", description = "Print JSON instead of tables.")
    private boolean json;

    @Override
    public Integer call() {
        Inventory inventory = Inventory.of(main.inventory());
        PrintWriter out = spec.commandLine().getOut();
        if (json) {
            out.println(InventoryReport.json(inventory));
        } else {
            InventoryReport.print(inventory, out);
        }
        return inventory.isWhole() ? Main.EXIT_ALL : Main.EXIT_INCOMPLETE;
    }
}
